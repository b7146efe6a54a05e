// Ledger accounts, accounting rules and requisitions for tests.
#pragma once

#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "accounting/budget_manager.h"
#include "automation/conversions.h"
#include "platform/database/literals.h"
#include "support/recorded_installation.h"

namespace talvex::test {

inline void OnInstallation(const std::function<void(TestInstallation&)>& body,
                           const std::string& now = "2026-03-16T10:00:00") {
  OnOwnThread([&] {
    TestInstallation installation(false, now);
    body(installation);
  });
}

inline void OnRecordedInstallation(const std::function<void(RecordedInstallation&)>& body) {
  OnOwnThread([&] {
    RecordedInstallation installation;
    body(installation);
  });
}

inline std::string SqlLiteral(const std::string& value) {
  return value == "null" ? value : platform::database::TextLiteral(value);
}

// Dates are "null" or in the form in which the table holds them. The usages of the dimensions as "1,3,3,3,3".
struct AccountRow {
  std::string code;
  int type = 4;
  std::string usages = "3,3,3,3,3";
  std::string from = "null";
  std::string to = "null";
};

inline void AddAccount(const TestInstallation& site, const AccountRow& row) {
  site.Sql(
      "INSERT INTO LEDGERACCOUNT (LEDGERACCOUNT, DESCRIPTION, ACCOUNTTYPE, DATEFROM, DATETO, DIMENSION1, "
      "DIMENSION2, DIMENSION3, DIMENSION4, DIMENSION5) VALUES (" +
      SqlLiteral(row.code) + ", null, " + std::to_string(row.type) + ", " + SqlLiteral(row.from) + ", " +
      SqlLiteral(row.to) + ", " + row.usages + ")");
}

struct LineRow {
  std::string property;
  int comparison = 5;
  std::string field_value;
};

struct RuleRow {
  int id = 1;
  int sequence = 10;
  std::string account;
  std::vector<LineRow> lines;
  std::string from = "null";
  std::string to = "null";
};

inline void AddLine(const TestInstallation& site, int rule, int number, const LineRow& line) {
  site.Sql(
      "INSERT INTO ACCOUNTINGRULELINE (ACCRULEID, LINENUMBER, LINEDESCRIPTION, OPERATOR, FIELDVALUE) VALUES "
      "(" +
      std::to_string(rule) + ", " + std::to_string(number) + ", " + SqlLiteral(line.property) + ", " +
      std::to_string(line.comparison) + ", " + SqlLiteral(line.field_value) + ")");
}

inline void AddRule(const TestInstallation& site, const RuleRow& row) {
  site.Sql(
      "INSERT INTO ACCOUNTINGRULE (ACCRULEID, RULEDESCRIPTION, SEQUENCENUMBER, LEDGERACCOUNT, DATEFROM, "
      "DATETO) VALUES (" +
      std::to_string(row.id) + ", null, " + std::to_string(row.sequence) + ", " + SqlLiteral(row.account) +
      ", " + SqlLiteral(row.from) + ", " + SqlLiteral(row.to) + ")");
  int number = 0;
  for (const LineRow& line : row.lines) AddLine(site, row.id, ++number, line);
}

inline void AddParameter(const TestInstallation& site, const std::string& name, const std::string& value) {
  site.Sql("INSERT INTO ACCOUNTINGPARAMETER (PARAMETERNAME, PARAMETERVALUE) VALUES (" + SqlLiteral(name) +
           ", " + SqlLiteral(value) + ")");
}

using Properties = std::vector<std::pair<std::string, automation::Variant>>;

inline std::shared_ptr<automation::Collection> Requisition(const Properties& properties) {
  auto collection = std::make_shared<automation::Collection>();
  for (const auto& [name, value] : properties) collection->Add(value, name);
  return collection;
}

inline std::string DefaultAccount(const Properties& properties, int type = 0) {
  return std::make_shared<BudgetManager>()->getDefaultLedgerAccount(Requisition(properties),
                                                                    static_cast<LedgerAccountType>(type));
}

}  // namespace talvex::test
