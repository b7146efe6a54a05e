// The part of BudgetManager that finds the ledger account a requisition line defaults to.
#include <unordered_map>
#include <utility>
#include <vector>

#include "accounting/accounting_parameter.h"
#include "accounting/budget_manager.h"
#include "accounting/rule_operators.h"
#include "automation/conversions.h"
#include "automation/text.h"
#include "services/frame.h"
#include "services/lib_general.h"
#include "services/lib_sql.h"
#include "services/required.h"

namespace talvex {

using automation::Collection;
using automation::Variant;
using platform::database::Connection;
using platform::database::Recordset;

namespace {

// An accounting dimension that has a name.
struct Dimension {
  std::int32_t number = 0;
  std::string name;        // Of the requisition property.
  std::size_t column = 0;  // How the account uses it.
};

struct RuleLine {
  std::int32_t number = 0;
  std::string property;  // Trimmed, as is the field value.
  RuleOperators comparison{};
  std::string field_value;
};
using LinesByRule = std::unordered_map<std::int32_t, std::vector<RuleLine>>;

// The properties of the requisition, each looked up when it is first wanted, and worked out once.
class Requisition {
 public:
  explicit Requisition(const std::shared_ptr<Collection>& properties) : properties_(properties) {}

  // Raises 5 for a property that is not there.
  const PropertyValue& Get(std::string_view name) {
    if (const auto known = known_.find(name); known != known_.end()) return known->second;
    Collection& properties = Required(properties_, "the requisition properties", "Talvex.BudgetManager");
    return known_.emplace(name, PropertyValue(properties.Item(name))).first->second;
  }

 private:
  const std::shared_ptr<Collection>& properties_;
  std::unordered_map<std::string, PropertyValue, automation::FoldedHash, automation::FoldedEqual> known_;
};

std::string CandidateStatement(LedgerAccountType type) {
  std::string sql =
      "SELECT AR.ACCRULEID FROM ACCOUNTINGRULELINE ARL, ACCOUNTINGRULE AR, "
      "LEDGERACCOUNT LA WHERE ARL.ACCRULEID = AR.ACCRULEID AND "
      "(AR.DATEFROM IS NULL OR AR.DATEFROM <= GETDATE()) AND "
      "(AR.DATETO IS NULL OR AR.DATETO >= GETDATE()) AND "
      "AR.LEDGERACCOUNT=LA.LEDGERACCOUNT AND ";
  const auto number = static_cast<std::int32_t>(type);
  if (number >= 1 && number <= 4) sql += " LA.ACCOUNTTYPE=" + std::to_string(number) + " AND ";
  return sql +
         "(LA.DATEFROM IS NULL OR LA.DATEFROM<=GETDATE()) AND "
         "(LA.DATETO IS NULL OR LA.DATETO>= GETDATE()) "
         "GROUP BY AR.ACCRULEID";
}

// "(3,7,12)"
std::string IdList(const std::vector<std::int32_t>& ids) {
  std::string list;
  for (const std::int32_t id : ids) list.append(list.empty() ? "(" : ",").append(std::to_string(id));
  return list + ")";
}

std::string LineStatement(const std::vector<std::int32_t>& candidates) {
  return "SELECT * FROM ACCOUNTINGRULELINE WHERE ACCRULEID IN " + IdList(candidates);
}

std::string AccountStatement(const std::vector<std::int32_t>& applying) {
  return "SELECT AR.ACCRULEID, AR.RULEDESCRIPTION, AR.SEQUENCENUMBER, LA.* FROM "
         "ACCOUNTINGRULE AR, LEDGERACCOUNT LA WHERE "
         "AR.ACCRULEID IN " +
         IdList(applying) +
         " AND AR.LEDGERACCOUNT=LA.LEDGERACCOUNT AND "
         "(LA.DATEFROM IS NULL OR LA.DATEFROM<=GETDATE()) AND "
         "(LA.DATETO IS NULL OR LA.DATETO>= GETDATE()) "
         "ORDER BY SEQUENCENUMBER ASC";
}

std::int32_t IntegerOf(const Variant& value) { return value.IsNull() ? 0 : automation::ToInt32(value); }

std::string TrimmedText(const Variant& value) {
  return std::string(automation::Trimmed(Lib_General::Gen_NullToString(value)));
}

std::vector<std::int32_t> ReadCandidates(LedgerAccountType type,
                                         const std::shared_ptr<Connection>& connection) {
  auto rows = Lib_SQL::Sql_GetDisconnectedRecordset(CandidateStatement(type), connection);
  std::vector<std::int32_t> candidates;
  for (; !rows->Eof(); rows->MoveNext()) candidates.push_back(automation::ToInt32(rows->Value(0U)));
  Lib_SQL::CloseRecordset(rows);
  return candidates;
}

// The lines of all candidates, put to their rules in one walk. Each rule keeps the order of the rows.
LinesByRule ReadLines(const std::vector<std::int32_t>& candidates,
                      const std::shared_ptr<Connection>& connection) {
  auto rows = Lib_SQL::Sql_GetDisconnectedRecordset(LineStatement(candidates), connection);
  const std::size_t rule = rows->Column("ACCRULEID");
  const std::size_t number = rows->Column("LINENUMBER");
  const std::size_t property = rows->Column("LINEDESCRIPTION");
  const std::size_t comparison = rows->Column("OPERATOR");
  const std::size_t field_value = rows->Column("FIELDVALUE");
  LinesByRule lines;
  lines.reserve(candidates.size());
  for (; !rows->Eof(); rows->MoveNext()) {
    lines[automation::ToInt32(rows->Value(rule))].push_back(
        {IntegerOf(rows->Value(number)), TrimmedText(rows->Value(property)),
         static_cast<RuleOperators>(IntegerOf(rows->Value(comparison))),
         TrimmedText(rows->Value(field_value))});
  }
  Lib_SQL::CloseRecordset(rows);
  return lines;
}

const RuleLine* FirstFailing(const std::vector<RuleLine>& lines, Requisition& requisition) {
  for (const RuleLine& line : lines) {
    if (!LineHolds(requisition.Get(line.property), line.comparison, line.field_value)) return &line;
  }
  return nullptr;
}

FailedLine Describe(const RuleLine& line, Requisition& requisition) {
  return {line.number, line.property, requisition.Get(line.property).Text(), line.comparison,
          line.field_value};
}

// The candidates whose lines all hold, in order.
std::vector<std::int32_t> ApplyingRules(const std::vector<std::int32_t>& candidates, const LinesByRule& lines,
                                        Requisition& requisition, AccountDecision* decision) {
  std::vector<std::int32_t> applying;
  for (const std::int32_t candidate : candidates) {
    const auto own = lines.find(candidate);
    const bool has_lines = own != lines.end();
    const RuleLine* const failing = has_lines ? FirstFailing(own->second, requisition) : nullptr;
    const bool applies = has_lines && failing == nullptr;
    if (applies) applying.push_back(candidate);
    if (decision == nullptr) continue;
    decision->compared.push_back({candidate, applies, std::nullopt});
    if (failing != nullptr) decision->compared.back().failed = Describe(*failing, requisition);
  }
  return applying;
}

// The dimensions that have a name; one without is not checked, whatever an account says of it.
std::vector<Dimension> NamedDimensions(const Recordset& accounts) {
  constexpr int kDimensions = 5;
  const automation::ObjectRef parameters = Lib_General::gen_getComponent(AccountingParameter::ClassName());
  parameters->Call("ReadParameters");
  std::vector<Dimension> dimensions;
  for (int number = 1; number <= kDimensions; ++number) {
    const std::string dimension = "Dimension" + std::to_string(number);
    std::string name = TrimmedText(parameters->Get(dimension));
    if (!name.empty()) dimensions.push_back({number, std::move(name), accounts.Column(dimension)});
  }
  return dimensions;
}

std::optional<EmptyDimension> FirstEmptyDimension(const Recordset& account,
                                                  const std::vector<Dimension>& dimensions,
                                                  Requisition& requisition) {
  constexpr auto kMandatory = static_cast<std::int32_t>(DimensionUsage::Mandatory);
  for (const auto& [number, name, column] : dimensions) {
    if (IntegerOf(account.Value(column)) != kMandatory) continue;
    if (requisition.Get(name).Text().empty()) return EmptyDimension{number, name};
  }
  return std::nullopt;
}

// The account of the first applying rule whose mandatory dimensions are all filled in.
std::string FirstAccount(const std::vector<std::int32_t>& applying, Requisition& requisition,
                         const std::shared_ptr<Connection>& connection, AccountDecision* decision) {
  auto accounts = Lib_SQL::Sql_GetDisconnectedRecordset(AccountStatement(applying), connection);
  if (accounts->Eof()) return {};
  const std::vector<Dimension> dimensions = NamedDimensions(*accounts);
  std::string result;
  for (; !accounts->Eof(); accounts->MoveNext()) {
    const auto empty = FirstEmptyDimension(*accounts, dimensions, requisition);
    if (decision != nullptr)
      decision->walked.push_back({automation::ToInt32(accounts->Value("ACCRULEID")),
                                  automation::ToText(accounts->Value("LEDGERACCOUNT")), empty});
    if (empty) continue;
    result = automation::ToText(accounts->Value("LEDGERACCOUNT"));
    break;
  }
  Lib_SQL::CloseRecordset(accounts);
  return result;
}

std::string FindAccount(LedgerAccountType type, Requisition& requisition,
                        const std::shared_ptr<Connection>& connection, AccountDecision* decision) {
  const std::vector<std::int32_t> candidates = ReadCandidates(type, connection);
  if (candidates.empty()) return {};
  const LinesByRule lines = ReadLines(candidates, connection);
  const std::vector<std::int32_t> applying = ApplyingRules(candidates, lines, requisition, decision);
  if (applying.empty()) return {};
  return FirstAccount(applying, requisition, connection, decision);
}

}  // namespace

std::string BudgetManager::getDefaultLedgerAccount(const std::shared_ptr<Collection>& i_RequisitionProps,
                                                   LedgerAccountType i_eAccountType) {
  return DecideLedgerAccount(i_RequisitionProps, i_eAccountType, nullptr);
}

std::string BudgetManager::DecideLedgerAccount(const std::shared_ptr<Collection>& properties,
                                               LedgerAccountType account_type, AccountDecision* decision) {
  return Reads("Talvex.BudgetManager.getDefaultLedgerAccount", [&] {
    auto connection = Lib_General::getConnection();
    Requisition requisition(properties);
    std::string account = FindAccount(account_type, requisition, connection, decision);
    if (decision != nullptr) decision->account = account;
    Lib_General::Gen_CloseConnection(connection);
    return account;
  });
}

}  // namespace talvex
