// Importing budgets from a workbook.
#include <unordered_set>

#include "automation/codes.h"
#include "automation/text.h"
#include "automation/transaction_context.h"
#include "exchange/budget.h"
#include "exchange/import_elements.h"
#include "platform/suite.h"
#include "services/frame.h"
#include "services/lib_general.h"
#include "services/lib_sql.h"

namespace talvex {

using automation::Dictionary;
using automation::Variant;
using Lib_ErrorHandling::Err_AppendLine;
using platform::xml::XmlDocumentRef;
using platform::xml::XmlNodeRef;

// One import on its way: what is known, what was found, and what became of each budget.
struct Budget::ImportRun {
  const std::string& user;
  const ImportObserver& observer;
  std::string& error;
  XmlDocumentRef document{};
  std::shared_ptr<Dictionary> offices{};
  std::shared_ptr<Dictionary> charge_types{};
  std::shared_ptr<Dictionary> currencies{};
  automation::ObjectRef ledger{};
  bool broken = false;  // Something failed that is not the workbook's fault.
  // As they are spelled: a header brings in the lines that spell its code as it does.
  std::unordered_set<std::string> loaded{};
  automation::CodeSet rejected{};
  std::size_t told = 0;

  // Tells of an element, with what was added to the error text since the last one.
  void Tell(platform::xml::XmlNode& element, const std::string& code) {
    if (observer) observer(element, code, std::string_view(error).substr(told));
    told = error.size();
  }

  // Walks the elements of that name with their budget codes. An element without one has that of the element
  // before it.
  template <class Step>
  void ForEach(const std::string& name, Step&& step) {
    std::string code;
    const auto elements = document->SelectNodes("//" + name);
    for (const XmlNodeRef& element : elements->Nodes()) {
      code = OwnKey(*element).value_or(code);
      step(element, code);
      Tell(*element, code);
    }
  }

  // Calls a loading operation of the ledger with the error text and the user by reference. What it raises
  // becomes an entry; false then.
  template <class Call>
  bool Load(const std::string& code, Call&& call) {
    Variant error_text = error;
    try {
      call(error_text);
      error = automation::ToText(error_text);
      return true;
    } catch (const automation::Error& failure) {
      error = automation::ToText(error_text);
      Err_AppendLine(error, failure.Description(), code);
      broken = true;
      return false;
    }
  }
};

namespace {

std::shared_ptr<Dictionary> OfficesOfSuite() {
  const platform::suite::SuiteUser users(
      Lib_General::gen_getComponent(platform::suite::class_name::kSuiteUser));
  auto offices = std::make_shared<Dictionary>();
  const auto listed = users.Offices();
  for (const auto& entry : listed->Entries()) offices->SetItem(automation::ToText(entry.item), entry.item);
  return offices;
}

std::shared_ptr<Dictionary> CurrenciesOfSuite() {
  return platform::suite::CurrencyConverter(
             Lib_General::gen_getComponent(platform::suite::class_name::kCurrency))
      .CurrencyCodes();
}

}  // namespace

bool Budget::CreateXMLforImport(const std::string& i_sExcelfile, const std::string& i_sUser,
                                Variant& o_sResultFile) {
  return Writes("Talvex.Budget.CreateXMLforImport", [&] {
    std::string error;
    const bool imported = Import(i_sExcelfile, i_sUser, error, {});
    o_sResultFile = Variant();
    if (!automation::Trimmed(error).empty()) o_sResultFile = CreateErrorLog(error, i_sExcelfile);
    return imported;
  });
}

bool Budget::Import(const std::string& workbook, const std::string& user, std::string& error,
                    const ImportObserver& observer) {
  RequireErrorLog(workbook);
  ImportRun run{user, observer, error};
  run.offices = OfficesOfSuite();
  run.charge_types = getChargeTypeCodes();
  run.currencies = CurrenciesOfSuite();
  run.told = error.size();
  run.document = ReadImport(workbook, run);
  if (run.document == nullptr) {
    Err_AppendLine(error, "", "");
    return false;
  }
  run.ledger = Lib_General::gen_getComponent("Talvex.BudgetT");
  LoadHeaders(run);
  LoadLines(run);
  LoadRelations(run);
  // The vote to undo that a failing step has cast stands: nothing of this import will be there.
  return !run.broken || automation::TransactionContext::Current() == nullptr;
}

XmlDocumentRef Budget::ReadImport(const std::string& workbook, ImportRun& run) {
  try {
    return ConvertWorkbookToImportXml(workbook, run.error, run.user);
  } catch (const automation::Error& failure) {
    Err_AppendLine(run.error, failure.Description(), "");
    return nullptr;
  }
}

void Budget::LoadHeaders(ImportRun& run) {
  run.ForEach("BudgetHeader", [&](const XmlNodeRef& header, const std::string& code) {
    const bool valid =
        CheckHeaderNode(run.user, *header, run.offices, run.charge_types, run.currencies, run.error) &&
        CheckLinesOf(run.user, OwnKey(*header).value_or(""), *run.document, run.error,
                     [&](platform::xml::XmlNode& line) { run.Tell(line, code); });
    const bool loaded = valid && run.Load(code, [&](Variant& error) {
      Variant user = run.user;
      run.ledger->Call("InsertBudgets", header, run.document, error, user);
    });
    if (loaded) {
      run.loaded.insert(code);
    } else {
      run.rejected.insert(code);
    }
  });
}

void Budget::LoadLines(ImportRun& run) {
  run.ForEach("BudgetLine", [&](const XmlNodeRef& line, const std::string& code) {
    // Lines come in with their header when they spell its code as it does, and otherwise by themselves; they
    // stay out with it however they spell it.
    if (run.loaded.contains(code) || run.rejected.contains(code)) return;
    if (!CheckBudgetLineNode(run.user, *line, run.error)) return;
    run.Load(code, [&](Variant& error) {
      run.ledger->Call("InsertBudgetLines", code, line, run.user, error, false);
    });
  });
}

void Budget::LoadRelations(ImportRun& run) {
  // Read once for all relations; the budgets of this import are there by now.
  const auto connection = Lib_General::getConnection();
  const auto budgets = Lib_SQL::Sql_GetDisconnectedRecordset("SELECT * FROM BUDGET", connection);
  run.ForEach("BudgetRelation", [&](const XmlNodeRef& relation, const std::string& code) {
    if (!CheckRelation(run.user, *relation, *budgets, run.error)) return;
    run.Load(code, [&](Variant& error) {
      run.ledger->Call("InsertBudgetRelations", code, relation, run.user, error);
    });
  });
}

std::shared_ptr<Dictionary> Budget::getChargeTypeCodes() {
  return Reads("Talvex.Budget.getChargeTypeCodes", [] {
    auto connection = Lib_General::getConnection();
    return Lib_SQL::Sql_getRecords(connection, "SELECT CHARGETYPECODE FROM CHARGETYPES", "CHARGETYPECODE",
                                   "CHARGETYPECODE");
  });
}

std::shared_ptr<Dictionary> Budget::GetAllChargeTypes() {
  using Codes = automation::ValueOf<std::shared_ptr<Dictionary>>;
  return Codes::From(Lib_General::gen_getComponent("Talvex.BudgetT")->Call("GetAllChargeTypes"));
}

}  // namespace talvex
