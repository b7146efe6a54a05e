#include "adapters/suite/referential_checker.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ledger/budget_t.h"
#include "platform/suite.h"
#include "unit/adapters/suite_database_world.h"

namespace talvex::adapters::suite {
namespace {

using automation::Array;
using automation::Variant;
using suite_test::ErrorOf;

constexpr std::string_view kReferentialRows = R"(
INSERT INTO SUITEUSER (USERID) VALUES ('anna'), ('o''brien');
INSERT INTO SUITEOFFICE (OFFICEDESCRIPTION) VALUES ('Lyon');
INSERT INTO CURRENCY (CURRENCYCODE, DECIMALS) VALUES ('EUR', 2);
INSERT INTO CHARGETYPES (CHARGETYPECODE) VALUES ('IT'), ('FREE');
INSERT INTO BUDGET (BUDGETCODE, CHARGETYPECODE) VALUES ('A', 'IT');
)";

class ReferentialCheckerTest : public testing::Test {
 protected:
  suite_test::DatabaseWorld world_{kReferentialRows};
  platform::suite::ReferentialChecker checker_{
      world_.classes->Create(platform::suite::class_name::kReferentialChecker)};
};

TEST_F(ReferentialCheckerTest, FollowsTheTableOfABudgetsReferences) {
  const struct {
    const char* name;
    Variant value;
    bool valid;
  } rows[] = {
      {"CURRENCYCODE", "EUR", true},
      {"currencycode", "eur", true},
      {"CURRENCYCODE", "QQQ", false},
      {"CURRENCYCODE", "", false},
      {"CURRENCYCODE", automation::kNull, false},
      {"USERID", "anna", true},
      {"USERID", "o'brien", true},
      {"USERID", "nobody", false},
      {"USERID", "  ", false},
      {"USERID", "", true},
      {"USERID", automation::kNull, true},
      {"OFFICEDESCRIPTION", "Lyon", true},
      {"OFFICEDESCRIPTION", "Mars", false},
      {"OFFICEDESCRIPTION", "", true},
      {"OFFICEDESCRIPTION", automation::kNull, true},
      {"CHARGETYPECODE", "UNKNOWN", true},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(checker_.HasValidReferences("BUDGET", Array({row.name}), Array({row.value})), row.valid)
        << row.name;
  }
  EXPECT_FALSE(
      checker_.HasValidReferences("budget", Array({"USERID", "CURRENCYCODE"}), Array({"anna", "QQQ"})));
  EXPECT_TRUE(checker_.HasValidReferences("BUDGET", Array(), Array()));
}

TEST_F(ReferentialCheckerTest, SaysWhatItDoesNotKnow) {
  const auto table = ErrorOf([&] { return checker_.HasValidReferences("CHARGELINES", Array(), Array()); });
  EXPECT_EQ(table.number, automation::error_number::kInvalidCall);
  EXPECT_EQ(table.source, "Corvane.ReferentialChecker");
  EXPECT_EQ(table.description, "The references of table 'CHARGELINES' are not known");
  const auto entity = ErrorOf([&] { return checker_.MayDelete("BUDGET", Array(), Array()); });
  EXPECT_EQ(entity.description, "The references of entity 'BUDGET' are not known");
  const auto record = ErrorOf([&] { return checker_.MayDelete("CHARGETYPE", Array(), Array()); });
  EXPECT_EQ(record.description, "The references of a record without CHARGETYPECODE are not known");
}

// Another component of the suite, which holds the charge type "FREE" while it is told to.
struct Neighbour final : public automation::Object {
  TALVEX_CLASS(Neighbour, "Neighbour.Orders", "Another component.");

 public:
  TALVEX_METHOD(bool, IReferentialIntegrity_Exists, (const Array& names, const Array& values),
                "Whether it refers to the value.");
  TALVEX_METHOD(bool, IReferentialIntegrity_BeforeDelete,
                (const std::string& entity, const Array& names, const Array& values),
                "Whether the record may go.");
  static inline bool refers = false;
  static inline bool allows = true;
  static inline std::vector<std::string> asked;
};

bool Neighbour::IReferentialIntegrity_Exists(const Array& names, const Array& values) {
  asked.push_back("exists " + names.At(0).As<std::string>() + "=" + values.At(0).As<std::string>());
  return refers;
}

bool Neighbour::IReferentialIntegrity_BeforeDelete(const std::string& entity, const Array& names,
                                                   const Array& values) {
  asked.push_back("before " + entity + " " + names.At(0).As<std::string>() + "=" +
                  values.At(0).As<std::string>());
  return allows;
}

TEST_F(ReferentialCheckerTest, LetsAChargeTypeGoWhenNothingRefersToItAndNobodyObjects) {
  world_.classes->Register<BudgetT>();
  world_.classes->Register<Neighbour>();
  const auto may_delete = [&](const char* code) {
    return checker_.MayDelete("chargetype", Array({"CHARGETYPECODE"}), Array({code}));
  };
  Neighbour::asked.clear();
  EXPECT_FALSE(may_delete("it"));
  EXPECT_TRUE(Neighbour::asked.empty());
  // The ledger itself holds every charge type; it is not asked for that.
  EXPECT_TRUE(may_delete("FREE"));
  EXPECT_EQ(Neighbour::asked, (std::vector<std::string>{"exists CHARGETYPECODE=FREE",
                                                        "before chargetype CHARGETYPECODE=FREE"}));
  Neighbour::refers = true;
  EXPECT_FALSE(may_delete("FREE"));
  Neighbour::refers = false;
  Neighbour::allows = false;
  EXPECT_FALSE(may_delete("FREE"));
  Neighbour::allows = true;
  EXPECT_TRUE(may_delete("FREE"));
}

}  // namespace
}  // namespace talvex::adapters::suite
