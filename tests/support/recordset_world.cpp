#include "support/recordset_world.h"

#include "automation/conversions.h"

namespace talvex::test {

namespace db = platform::database;
using automation::Date;
using automation::kNull;

RecordsetWorld::RecordsetWorld() {
  database->tables = {
      {"BUDGET", {{"BUDGETCODE", true, false}, {"BUDGETTYPE", false, false}, {"USERID", false, false}}},
      {"BUDGETLINES",
       {{"BUDGETCODE", false, false},
        {"ID", true, true},
        {"STARTDATE", false, false},
        {"BUDGETAMNT", false, false}}}};
  database->queries[kBudgets] = {{"BUDGETCODE", "BUDGETTYPE", "USERID"},
                                 {{"A", 1, "carol"}, {"B", 2, kNull}, {"C", 1, ""}}};
  database->queries[kLines] = {{"BUDGETCODE", "ID", "STARTDATE", "BUDGETAMNT"},
                               {{"A", 1, Date::Civil(2026, 1, 1), 100.0},
                                {"A", 2, Date::Civil(2027, 1, 1), kNull},
                                {"B", 3, kNull, 12.5}}};
  connection = Connect();
  database->Forget();
}

std::shared_ptr<db::Recordset> RecordsetWorld::Open(const std::string& query, db::LockType lock_type) const {
  auto set = std::make_shared<db::Recordset>();
  set->Open(query, connection, db::CursorType::Keyset, lock_type, 1);
  return set;
}

std::string Walk(db::Recordset& set, const std::string& column) {
  std::string values;
  for (; !set.Eof(); set.MoveNext()) {
    const automation::Variant value = set.Value(column);
    if (!values.empty()) values += ' ';
    values += value.IsNull() ? "Null" : automation::ToText(value);
  }
  return values;
}

void AddNew(db::Recordset& set) { set.AddNew(std::nullopt, std::nullopt); }
void Update(db::Recordset& set) { set.Update(std::nullopt, std::nullopt); }

}  // namespace talvex::test
