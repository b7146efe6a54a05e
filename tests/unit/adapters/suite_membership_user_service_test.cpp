#include "adapters/suite/membership_user_service.h"

#include <string>

#include <gtest/gtest.h>

#include "platform/suite.h"
#include "unit/adapters/suite_database_world.h"

namespace talvex::adapters::suite {
namespace {

using suite_test::ErrorOf;
namespace number = automation::error_number;

constexpr std::string_view kMembershipRows = R"(
INSERT INTO SUITEUSER (USERID, FULLNAME, EMAIL, LOCALEID) VALUES
  ('h.moreau', NULL, NULL, 1036), ('o''brien', NULL, NULL, 1033), ('mute', NULL, NULL, NULL),
  ('far', NULL, NULL, 40000);
)";

class SuiteMembershipUser : public testing::Test {
 protected:
  [[nodiscard]] std::int16_t LocaleOf(std::string_view user) const {
    service_.Initialise("/inst\\siteconfiguration.xml");
    service_.Open(user, "script", "code");
    return service_.LocaleId();
  }
  [[nodiscard]] automation::ErrorState ErrorFor(std::string_view user) const {
    return ErrorOf([&] { static_cast<void>(LocaleOf(user)); });
  }

  suite_test::DatabaseWorld world_{kMembershipRows};
  platform::suite::MembershipUser service_{
      world_.classes->Create(platform::suite::class_name::kMembershipUser)};
};

TEST_F(SuiteMembershipUser, KnowsTheLocaleOfAUser) {
  EXPECT_EQ(LocaleOf("h.moreau"), 1036);
  EXPECT_EQ(LocaleOf("H.MOREAU"), 1036);
  EXPECT_EQ(LocaleOf("o'brien"), 1033);
}

TEST_F(SuiteMembershipUser, AUserWithoutLocaleIsAnErrorThatNamesHim) {
  EXPECT_EQ(ErrorFor("mute").description, "The user 'mute' has no locale");
  EXPECT_EQ(ErrorFor("mute").number, number::kInvalidCall);
}

TEST_F(SuiteMembershipUser, AnUnknownUserIsAnErrorThatNamesHim) {
  EXPECT_EQ(ErrorFor("ghost").description, "The user 'ghost' is unknown");
}

TEST_F(SuiteMembershipUser, TheEmptyUserIsNobodyInParticularWhoeverWasOpenBefore) {
  EXPECT_EQ(LocaleOf(""), 0);
  EXPECT_EQ(LocaleOf("h.moreau"), 1036);
  EXPECT_EQ(LocaleOf("  "), 0);
}

TEST_F(SuiteMembershipUser, ALocaleIdThatDoesNotFitIsAnOverflow) {
  EXPECT_EQ(ErrorFor("far").number, number::kOverflow);
}

TEST_F(SuiteMembershipUser, NothingIsKnownBeforeOpen) {
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(service_.LocaleId()); }).number, number::kObjectNotSet);
  EXPECT_EQ(ErrorOf([&] { service_.Open("h.moreau", "", ""); }).number, number::kObjectNotSet);
}

TEST_F(SuiteMembershipUser, AnUnreadableConfigurationIsAnError) {
  EXPECT_EQ(ErrorOf([&] { service_.Initialise("/inst\\other.xml"); }).number, number::kFileNotFound);
}

TEST_F(SuiteMembershipUser, TakesTheDatabaseOfTheConfigurationItWasGiven) {
  const std::string& own = world_.files->content["/inst/siteconfiguration.xml"];
  world_.files->content["/inst/other.xml"] = automation::Replaced(own, "talvex.db", "nowhere.db");
  service_.Initialise("/inst/other.xml");
  EXPECT_EQ(ErrorOf([&] { service_.Open("h.moreau", "", ""); }).number, number::kCannotOpenDatabase);
}

TEST_F(SuiteMembershipUser, WorksInsideATransaction) {
  const automation::TransactionContext transaction(*world_.classes);
  world_.Sql("UPDATE SUITEUSER SET LOCALEID=1043 WHERE USERID='h.moreau'");
  EXPECT_EQ(LocaleOf("h.moreau"), 1043);
}

}  // namespace
}  // namespace talvex::adapters::suite
