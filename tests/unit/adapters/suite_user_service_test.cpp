#include "adapters/suite/suite_user_service.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/suite.h"
#include "unit/adapters/suite_database_world.h"

namespace talvex::adapters::suite {
namespace {

using automation::Variant;
using suite_test::ErrorOf;
namespace number = automation::error_number;

constexpr std::string_view kUserRows = R"(
INSERT INTO SUITEUSER (USERID, FULLNAME, EMAIL, LOCALEID) VALUES
  ('h.moreau', 'Hélène Moreau', ' h.moreau@example.com ', 1036),
  ('d.reed', 'Daniel Reed', 'd.reed@example.org', 1033),
  ('o''brien', NULL, 'obrien@example.com', 1033),
  ('nomail', 'No Mail', NULL, 1033),
  ('blank', 'Blank Mail', '  ', 1033),
  ('two', 'Two Mails', 'a@example.com, b@example.com', 1033);
INSERT INTO SUITEOFFICE (OFFICEDESCRIPTION) VALUES ('Lyon'), ('Amsterdam'), ('Hamburg');
)";

class SuiteUserServiceTest : public testing::Test {
 protected:
  [[nodiscard]] std::vector<std::string> Outbox() const { return world_.files->In("/inst/outbox"); }
  [[nodiscard]] nlohmann::json OnlyMail() const {
    const auto names = Outbox();
    EXPECT_EQ(names.size(), 1U);
    return suite_test::ReadMail(world_.files->content.at("/inst/outbox/" + names.at(0)));
  }
  [[nodiscard]] automation::ErrorState ErrorFor(std::string_view from, std::string_view to) const {
    return ErrorOf([&] { service_.SendMail(from, to, "s", "b"); });
  }

  suite_test::DatabaseWorld world_{kUserRows};
  automation::ObjectRef object_ = world_.classes->Create(platform::suite::class_name::kSuiteUser);
  platform::suite::SuiteUser service_{object_};
};

TEST_F(SuiteUserServiceTest, MailsFromOneUserToAnother) {
  service_.SendMail("H.Moreau", "d.reed", "Attention, budget: IT-12", "Montant: 12,50 €\r\n");
  const auto mail = OnlyMail();
  EXPECT_EQ(mail["defects"], nlohmann::json::array());
  EXPECT_EQ(mail["from"][0]["name"], "Hélène Moreau");
  EXPECT_EQ(mail["from"][0]["address"], "h.moreau@example.com");
  EXPECT_EQ(mail["to"][0]["name"], "Daniel Reed");
  EXPECT_EQ(mail["to"][0]["address"], "d.reed@example.org");
  EXPECT_EQ(mail["subject"], "Attention, budget: IT-12");
  EXPECT_EQ(mail["body"], "Montant: 12,50 €\r\n");
  EXPECT_EQ(mail["date"], "Sat, 21 Nov 2026 14:30:05 -0000");
  const std::string file = Outbox().at(0);
  EXPECT_TRUE(file.starts_with("20261121T143005-") && file.ends_with(".eml")) << file;
  EXPECT_EQ(mail["id"], "<" + file.substr(0, file.size() - 4) + "@example.com>");
}

TEST_F(SuiteUserServiceTest, MailsAUserToHimself) {
  service_.SendMail("o'brien", "o'brien", "s", "b");
  const auto mail = OnlyMail();
  EXPECT_EQ(mail["from"], mail["to"]);
  EXPECT_EQ(mail["to"][0]["address"], "obrien@example.com");
  EXPECT_EQ(mail["to"][0]["name"], "");
}

TEST_F(SuiteUserServiceTest, WithoutAnAddresseeNothingIsSentAndTheLogSaysSo) {
  service_.SendMail("d.reed", "  ", "Lost", "b");
  EXPECT_EQ(Outbox().size(), 0U);
  const auto entry = nlohmann::json::parse(world_.Log());
  EXPECT_EQ(entry["source"], "Mirelo.User.SendMail");
  EXPECT_EQ(entry["text"], "The mail 'Lost' was not sent: it has no addressee");
  EXPECT_EQ(world_.traffic->opened, 0);
}

TEST_F(SuiteUserServiceTest, AUserWhoCannotBeMailedIsAnErrorThatNamesHim) {
  EXPECT_EQ(ErrorFor("d.reed", "ghost").description, "The user 'ghost' is unknown");
  EXPECT_EQ(ErrorFor("ghost", "d.reed").description, "The user 'ghost' is unknown");
  EXPECT_EQ(ErrorFor("", "d.reed").description, "The user '' is unknown");
  EXPECT_EQ(ErrorFor("d.reed", "nomail").description, "The user 'nomail' has no e-mail address");
  EXPECT_EQ(ErrorFor("d.reed", "blank").description, "The user 'blank' has no e-mail address");
  const auto two = ErrorFor("d.reed", "two");
  EXPECT_EQ(two.number, number::kInvalidCall);
  EXPECT_EQ(two.description,
            "The user 'two' has an e-mail address that is none: 'a@example.com, b@example.com'");
  EXPECT_EQ(Outbox().size(), 0U);
  EXPECT_EQ(world_.Log(), "");
}

TEST_F(SuiteUserServiceTest, AMailInATransactionWaitsForItsOutcome) {
  {
    automation::TransactionContext transaction(*world_.classes);
    service_.SendMail("d.reed", "d.reed", "kept", "b");
    EXPECT_TRUE(Outbox().at(0).starts_with(".pending-"));
    EXPECT_TRUE(transaction.Commit());
  }
  {
    automation::TransactionContext transaction(*world_.classes);
    service_.SendMail("d.reed", "d.reed", "taken back", "b");
    EXPECT_EQ(Outbox().size(), 2U);
    transaction.SetAbort();
    EXPECT_FALSE(transaction.Commit());
  }
  EXPECT_EQ(OnlyMail()["subject"], "kept");
}

TEST_F(SuiteUserServiceTest, AMailThatCannotBeWrittenFailsTheCall) {
  world_.files->before = suite_test::Failing("WriteNew");
  EXPECT_EQ(ErrorFor("d.reed", "d.reed").number, number::kFileAccess);
}

TEST_F(SuiteUserServiceTest, MailsOfOneMomentKeepTheirOrder) {
  for (const auto* subject : {"first", "second", "third"})
    service_.SendMail("d.reed", "d.reed", subject, "b");
  std::string order;
  for (const auto& name : Outbox()) {
    const std::string& text = world_.files->content.at("/inst/outbox/" + name);
    const std::size_t at = text.find("Subject: ") + 9;
    order += text.substr(at, text.find('\r', at) - at) + " ";
  }
  EXPECT_EQ(order, "first second third ");
}

TEST_F(SuiteUserServiceTest, KnowsItsUsers) {
  EXPECT_EQ(object_->Call("Exists", "D.REED"), Variant(true));
  EXPECT_EQ(object_->Call("Exists", "o'brien"), Variant(true));
  EXPECT_EQ(object_->Call("Exists", "ghost"), Variant(false));
  EXPECT_EQ(object_->Call("Exists", ""), Variant(false));
}

TEST_F(SuiteUserServiceTest, ListsItsOfficesInOrder) {
  SuiteUserService service(world_.installation);
  const auto listed = service.Offices();
  std::vector<std::string> offices;
  for (const auto& entry : listed->Entries()) offices.push_back(entry.item.As<std::string>());
  EXPECT_EQ(offices, (std::vector<std::string>{"Amsterdam", "Hamburg", "Lyon"}));
}

}  // namespace
}  // namespace talvex::adapters::suite
