#include <gtest/gtest.h>

#include "automation/error.h"
#include "automation/transaction_context.h"
#include "host/message_manager.h"
#include "host/transaction_host.h"
#include "services/lib_general.h"
#include "services/lib_mts.h"
#include "services/lib_user_lib.h"
#include "support/stood_in_test.h"

namespace talvex::test {

namespace {

using automation::Date;
using automation::Error;
using automation::ErrorState;
using automation::kNull;
using automation::TransactionContext;
using automation::Variant;
using Lib_General::Gen_CloseConnection;
using Lib_General::gen_getComponent;
using Lib_General::Gen_GetConnectionString;
using Lib_General::Gen_GetI18N;
using Lib_General::getConnection;
using platform::database::ObjectState;

// The configuration, with values that a test sets; counts how often it is asked.
class SettableConfiguration final : public automation::Object {
  TALVEX_CLASS(SettableConfiguration, "Corvane.Configuration", "Values that a test sets.");

 public:
  enum class Entries { One, None, NotSet, OneNotSet };
  struct Values {
    std::string connection_string;
    std::string root;
    Entries entries = Entries::One;
    int created = 0;
    std::vector<std::string> calls;
  };
  explicit SettableConfiguration(std::shared_ptr<Values> values) : values_(std::move(values)) {
    ++values_->created;
  }

  TALVEX_METHOD(void, SelectApplication, (const std::string& name, std::int32_t mode),
                "Keeps the arguments.");
  TALVEX_METHOD(std::string, Value, (const std::string& section, const std::string& key), "A value.");
  TALVEX_METHOD(std::shared_ptr<automation::Dictionary>, ApplicationEntries, (const std::string& name),
                "One entry.");
  TALVEX_METHOD(void, Load, (const std::string& path), "Keeps the path.");
  TALVEX_READONLY(std::string, ConfigDir, "ConfigDir", "A directory.");

 private:
  std::shared_ptr<Values> values_;
};

void SettableConfiguration::SelectApplication(const std::string& name, std::int32_t mode) {
  values_->calls.push_back("SelectApplication " + name + " " + std::to_string(mode));
}

std::string SettableConfiguration::Value(const std::string& section, const std::string& key) {
  values_->calls.push_back("Value " + section + " " + key);
  if (key == "VantorConnection_ConnectionString") return values_->connection_string;
  if (key == "LDAPRoot") return values_->root;
  return key + "-value";
}

std::shared_ptr<automation::Dictionary> SettableConfiguration::ApplicationEntries(const std::string& name) {
  values_->calls.push_back("ApplicationEntries " + name);
  if (values_->entries == Entries::NotSet) return nullptr;
  auto entries = std::make_shared<automation::Dictionary>();
  if (values_->entries == Entries::One) entries->Add("only", Variant(shared_from_this()));
  if (values_->entries == Entries::OneNotSet) entries->Add("only", Variant());
  return entries;
}

void SettableConfiguration::Load(const std::string& path) { values_->calls.push_back("Load " + path); }

std::string SettableConfiguration::ConfigDir() const { return "C:\\site"; }

std::shared_ptr<SettableConfiguration::Values> SetConfiguration(StoodIn& test,
                                                                const std::string& connection_string) {
  auto values = std::make_shared<SettableConfiguration::Values>();
  values->connection_string = connection_string;
  test.Environment().classes->Register(SettableConfiguration::Info(),
                                       [values] { return std::make_shared<SettableConfiguration>(values); });
  return values;
}

std::string DatabaseOf(StoodIn& test) { return "Driver=SQLite;Database=" + test.Site().DatabasePath(); }

TEST(GenGetComponent, CreatesDirectlyOutsideATransaction) {
  WithStandIns(
      [](StoodIn&) { EXPECT_EQ(gen_getComponent("talvex.budgett")->Class().Name(), "Talvex.BudgetT"); });
}

TEST(GenGetComponent, CreatesThroughTheContextInsideATransaction) {
  WithStandIns([](StoodIn& test) {
    // A registry that only the context knows.
    automation::ClassRegistry of_context = *test.Environment().classes;
    of_context.Register("Only.Here", automation::Dictionary::Info(),
                        [] { return std::make_shared<automation::Dictionary>(); });
    const TransactionContext context(of_context);
    EXPECT_NE(gen_getComponent("Only.Here"), nullptr);
  });
}

TEST(GenGetComponent, NamesTheClassThatItFailedToCreate) {
  WithStandIns([](StoodIn& test) {
    const ErrorState raised = ErrorOf([] { static_cast<void>(gen_getComponent("No.Such")); });
    EXPECT_EQ(raised.number, 429);
    EXPECT_TRUE(
        raised.description.starts_with("\r\nERROR 0x1AD\r\n METHOD: Lib_General.gen_getComponent\r\n"))
        << raised.description;
    EXPECT_TRUE(
        raised.description.ends_with(" INFO: Failed to create a component with PROGID 'No.Such'.\r\n"))
        << raised.description;
    EXPECT_EQ(test.Record().log.size(), 1U);
  });
}

TEST(Votes, DoNothingOutsideATransaction) {
  EXPECT_NO_THROW(Lib_MTS::MTS_SetComplete());
  EXPECT_NO_THROW(Lib_MTS::MTS_SetAbort());
}

TEST(GetConnection, IsOpenAndAsksForReadCommitted) {
  WithStandIns([](StoodIn& test) {
    const auto values = SetConfiguration(test, DatabaseOf(test));
    const auto connection = getConnection();
    EXPECT_EQ(connection->State(), ObjectState::Open);
    EXPECT_EQ(connection->IsolationLevel, 4096);
    EXPECT_EQ(values->calls,
              (std::vector<std::string>{"SelectApplication Vantor 0",
                                        "Value CONNECTIONS VantorConnection_ConnectionString"}));
  });
}

TEST(GetConnection, AsksTheConfigurationOnceAThread) {
  WithStandIns([](StoodIn& test) {
    const auto values = SetConfiguration(test, DatabaseOf(test));
    static_cast<void>(getConnection());
    values->connection_string = "Driver=SQLite;Database=/nowhere";
    EXPECT_NO_THROW(static_cast<void>(getConnection()));
    EXPECT_EQ(values->created, 1);
    EXPECT_EQ(Gen_GetConnectionString(), "Driver=SQLite;Database=/nowhere");
    // A new thread learns of the change.
    OnOwnThread([&] {
      const platform::Environment::ForThread environment(
          std::make_shared<platform::Environment>(test.Environment()));
      EXPECT_EQ(ErrorOf([] { static_cast<void>(getConnection()); }).number,
                automation::error_number::kCannotOpenDatabase);
    });
  });
}

// Each host on a thread has a connection string of its own, and comes back to it.
TEST(GetConnection, ASecondHostOnTheSameThreadWorksOnItsOwnDatabase) {
  OnOwnThread([] {
    const auto add = [](const std::string& office) {
      getConnection()->Execute("INSERT INTO SUITEOFFICE (OFFICEDESCRIPTION) VALUES ('" + office + "')",
                               nullptr, std::nullopt);
    };
    const auto offices = [](const TestInstallation& site) {
      return site.Rows("SELECT OFFICEDESCRIPTION FROM SUITEOFFICE ORDER BY OFFICEDESCRIPTION");
    };
    const TestInstallation first;
    add("a1");
    {
      const TestInstallation second;
      add("b1");
      EXPECT_EQ(offices(second), std::vector<std::string>{"b1"});
      {
        const platform::Environment::ForThread again(first.Host().Environment());
        add("a2");
      }
      add("b2");
      EXPECT_EQ(offices(second), (std::vector<std::string>{"b1", "b2"}));
    }
    add("a3");
    EXPECT_EQ(offices(first), (std::vector<std::string>{"a1", "a2", "a3"}));
  });
}

TEST(GetConnection, ReadsABlankStringAnewEveryTime) {
  WithStandIns([](StoodIn& test) {
    const auto values = SetConfiguration(test, "   ");
    ErrorOf([] { static_cast<void>(getConnection()); });
    ErrorOf([] { static_cast<void>(getConnection()); });
    EXPECT_EQ(values->created, 2);
    values->connection_string = DatabaseOf(test);
    EXPECT_NO_THROW(static_cast<void>(getConnection()));
    EXPECT_EQ(values->created, 3);
  });
}

TEST(GetConnection, FailsUnderTheNameThatIsKeptForIt) {
  WithStandIns([](StoodIn& test) {
    SetConfiguration(test, "Driver=SQLite;Database=/nowhere/talvex.db;PWD=secret");
    const ErrorState raised = ErrorOf([] { static_cast<void>(getConnection()); });
    EXPECT_NE(raised.description.find(" METHOD: Quorrin.RequisitionUtilities.getConnection\r\n"),
              std::string::npos);
    EXPECT_EQ(raised.description.find("INFO:"), std::string::npos);
    EXPECT_EQ(raised.description.find("secret"), std::string::npos);
    for (const LogEntry& entry : test.Record().log) EXPECT_EQ(entry.text.find("secret"), std::string::npos);
  });
}

TEST(GenCloseConnection, ClosesAndReleasesAnOpenConnection) {
  WithStandIns([](StoodIn&) {
    auto connection = getConnection();
    const auto kept = connection;
    Gen_CloseConnection(connection);
    EXPECT_EQ(connection, nullptr);
    EXPECT_EQ(kept->State(), ObjectState::Closed);
  });
}

TEST(GenCloseConnection, LeavesAClosedOrEmptyOneAlone) {
  WithStandIns([](StoodIn&) {
    auto connection = getConnection();
    connection->Close();
    Gen_CloseConnection(connection);
    EXPECT_NE(connection, nullptr);
    connection.reset();
    EXPECT_NO_THROW(Gen_CloseConnection(connection));
  });
}

TEST(GenCloseConnection, LeavesThePendingErrorOfAHandlerAsItIs) {
  WithStandIns([](StoodIn&) {
    auto connection = getConnection();
    const automation::PendingErrorScope pending({13, "Source", "first", "", 0});
    Gen_CloseConnection(connection);
    EXPECT_EQ(connection, nullptr);
    EXPECT_EQ(automation::PendingError().description, "first");
  });
}

TEST(NullConversions, FollowTheirTable) {
  const Variant date = Date::Civil(2026, 3, 15);
  EXPECT_EQ(Lib_General::Gen_NullToString(kNull), "");
  EXPECT_EQ(Lib_General::Gen_NullToString(12.5), "12.5");
  EXPECT_EQ(Lib_General::Gen_NullToString(" x "), " x ");
  EXPECT_EQ(Lib_General::Gen_NullToDouble(kNull), 0);
  EXPECT_EQ(Lib_General::Gen_NullToDouble("12.5"), 12.5);
  EXPECT_EQ(Lib_General::Gen_EmptyToNull(kNull), Variant(kNull));
  EXPECT_EQ(Lib_General::Gen_EmptyToNull(""), Variant(kNull));
  EXPECT_EQ(Lib_General::Gen_EmptyToNull("   "), Variant(kNull));
  EXPECT_EQ(Lib_General::Gen_EmptyToNull(" x "), Variant("x"));
  EXPECT_EQ(Lib_General::Gen_EmptyToNull(7), Variant("7"));
  EXPECT_EQ(Lib_General::Gen_EmptyToNull({}), Variant(kNull));
  EXPECT_EQ(Lib_General::Gen_EmptyToNullDate(kNull), Variant(kNull));
  EXPECT_EQ(Lib_General::Gen_EmptyToNullDate("  "), Variant(kNull));
  EXPECT_EQ(Lib_General::Gen_EmptyToNullDate(" 3/15/2026 "), date);
  EXPECT_EQ(Lib_General::Gen_EmptyToNullDate(date), date);
  EXPECT_THROW(static_cast<void>(Lib_General::Gen_EmptyToNullDate("soon")), Error);
}

TEST(GenQuoteSQL, EscapesApostrophesAndPercentSigns) {
  EXPECT_EQ(Lib_General::Gen_QuoteSQL("O'Neil"), "O''Neil");
  EXPECT_EQ(Lib_General::Gen_QuoteSQL("50%"), "50[%]");
  EXPECT_EQ(Lib_General::Gen_QuoteSQL("'%'"), "''[%]''");
  EXPECT_EQ(Lib_General::Gen_QuoteSQL(""), "");
  EXPECT_EQ(Lib_General::Gen_QuoteSQL(12), "12");
  EXPECT_EQ(ErrorNumberOf([] { static_cast<void>(Lib_General::Gen_QuoteSQL(kNull)); }), 94);
}

struct RootRow {
  const char* root;
  const char* open;
};

TEST(UlCreateUo, OpensTheUserWithWhatTheSiteConfigurationGives) {
  const RootRow rows[] = {{"", "Open anna MemScriptUser-value MemScriptCode-value"},
                          {"dc=site", "Open anna MemScriptUser-value,dc=site MemScriptCode-value"}};
  for (const RootRow& row : rows) {
    WithStandIns([&](StoodIn& test) {
      test.Replace<RecordingUser>();
      const auto values = SetConfiguration(test, "");
      values->root = row.root;
      static_cast<void>(Lib_UserLib::UL_CreateUO("anna"));
      EXPECT_EQ(values->calls,
                (std::vector<std::string>{"ApplicationEntries Vantor", "Load C:\\site\\siteconfiguration.xml",
                                          "Value MEMBERSHIP MemScriptUser", "Value MEMBERSHIP MemScriptCode",
                                          "Value MEMBERSHIP LDAPRoot"}));
      EXPECT_EQ(test.Record().calls,
                (std::vector<std::string>{"Initialise C:\\site\\siteconfiguration.xml", row.open}));
    });
  }
}

TEST(UlCreateUo, AConfigurationWithoutEntriesIsAClearError) {
  struct Row {
    SettableConfiguration::Entries entries;
    std::int32_t number;
    const char* reason;
  };
  using Entries = SettableConfiguration::Entries;
  const Row rows[] = {{Entries::None, 5, "has no entries for the application \"Vantor\""},
                      {Entries::NotSet, 91, "gives no entries for the application \"Vantor\""},
                      {Entries::OneNotSet, 91, "an entry of an application"}};
  for (const Row& row : rows) {
    WithStandIns([&](StoodIn& test) {
      test.Replace<RecordingUser>();
      const auto values = SetConfiguration(test, "");
      values->entries = row.entries;
      const ErrorState raised = ErrorOf([] { static_cast<void>(Lib_UserLib::UL_CreateUO("anna")); });
      EXPECT_EQ(raised.number, row.number) << row.reason;
      EXPECT_NE(raised.description.find(row.reason), std::string::npos) << raised.description;
      EXPECT_TRUE(test.Record().calls.empty());
      EXPECT_EQ(values->calls, std::vector<std::string>{"ApplicationEntries Vantor"});
    });
  }
}

TEST(UlCreateUo, FailsUnderItsName) {
  WithStandIns([](StoodIn& test) {
    test.Replace<RecordingUser>();
    test.Record().fail_in = "Open";
    const ErrorState raised = ErrorOf([] { static_cast<void>(Lib_UserLib::UL_CreateUO("anna")); });
    EXPECT_EQ(raised.description,
              "\r\nERROR 0x3E8\r\n METHOD: Lib_UserLib.UL_CreateUO\r\n DESC: out of order.\r\n");
  });
}

std::size_t UsersOpened(StoodIn& test) { return test.Record().calls.size() / 2; }

TEST(GenGetI18N, GivesTheTextInTheUsersLanguage) {
  WithStandIns([](StoodIn& test) {
    test.Replace<RecordingUser>();
    EXPECT_EQ(Gen_GetI18N("anna", "SLBBU0240"), "Budget summary");
    EXPECT_EQ(Gen_GetI18N("nadine", "SLBBU0070"), "Montant approuvé");
  });
}

TEST(GenGetI18N, CreatesTheUserOnceForTwoCallsInARow) {
  WithStandIns([](StoodIn& test) {
    test.Replace<RecordingUser>();
    static_cast<void>(Gen_GetI18N("anna", "SLBBU0240"));
    static_cast<void>(Gen_GetI18N("anna", "SLBBU0070"));
    EXPECT_EQ(UsersOpened(test), 1U);
  });
}

TEST(GenGetI18N, CreatesAUserAnewAfterAnotherOne) {
  WithStandIns([](StoodIn& test) {
    test.Replace<RecordingUser>();
    for (const auto* user : {"anna", "nadine", "anna", "Anna"})
      static_cast<void>(Gen_GetI18N(user, "SLBBU0240"));
    EXPECT_EQ(UsersOpened(test), 4U);
  });
}

TEST(GenGetI18N, ABlankLabelIsAnEmptyTextWithoutAUser) {
  WithStandIns([](StoodIn& test) {
    test.Replace<RecordingUser>();
    EXPECT_EQ(Gen_GetI18N("anna", ""), "");
    EXPECT_EQ(Gen_GetI18N("anna", "   "), "");
    EXPECT_EQ(UsersOpened(test), 0U);
  });
}

TEST(GenGetI18N, SaysWhichLabelOfWhichUserIsNotKnownOutsideAHost) {
  WithStandIns([](StoodIn& test) {
    test.Replace<RecordingUser>();
    EXPECT_EQ(Gen_GetI18N("anna", "O'NO"),
              "Label or Locale not known for user:anna locale: 1033 Message Code: O'NO");
  });
}

TEST(GenGetI18N, AsksTheHostInsideATransactionAndTakesItsAnswerAsItIs) {
  WithStandIns([](StoodIn& test) {
    test.Replace<RecordingUser>();
    const auto context = test.Site().Host().Transactions().Begin();
    EXPECT_EQ(Gen_GetI18N("anna", "SLBBU0240"), "Budget summary");
    EXPECT_EQ(Gen_GetI18N("anna", "NONE"), "");
  });
}

TEST(GenGetI18N, GivesTheEmptyUserEnglishTextsWhoeverWasLookedUpBefore) {
  WithStandIns([](StoodIn& test) {
    test.Site().Sql("INSERT INTO SUITEUSER (USERID, LOCALEID) VALUES ('hugo', 1043)");
    const auto texts_in_turn = [] {
      for (const auto& [user, text] : {std::pair("", "Budget summary"),
                                       {"hugo", "Budgetoverzicht"},
                                       {"", "Budget summary"},
                                       {"hugo", "Budgetoverzicht"}}) {
        EXPECT_EQ(Gen_GetI18N(user, "SLBBU0240"), text);
      }
    };
    texts_in_turn();
    EXPECT_EQ(Gen_GetI18N("", "NONE"), "Label or Locale not known for user: locale: 0 Message Code: NONE");
    const auto context = test.Site().Host().Transactions().Begin();
    texts_in_turn();
    EXPECT_EQ(ErrorNumberOf([] { static_cast<void>(Gen_GetI18N("ghost", "SLBBU0240")); }), 5);
  });
}

TEST(GenGetI18N, ASecondHostOnTheSameThreadKnowsItsOwnUsers) {
  OnOwnThread([] {
    const auto add_user = [](const TestInstallation& site, int locale) {
      site.Sql(
          "INSERT INTO SUITEUSER (USERID, FULLNAME, EMAIL, LOCALEID) VALUES ('anna', 'x', 'x@example.com', " +
          std::to_string(locale) + ")");
    };
    const TestInstallation first;
    add_user(first, 1036);
    EXPECT_EQ(Gen_GetI18N("anna", "SLBBU0070"), "Montant approuvé");
    {
      const TestInstallation second;
      add_user(second, 1033);
      EXPECT_EQ(Gen_GetI18N("anna", "SLBBU0070"), "Approved amount");
    }
    EXPECT_EQ(Gen_GetI18N("anna", "SLBBU0070"), "Montant approuvé");
  });
}

TEST(GenGetI18N, AHostThatLacksWhatItMustOfferIsAClearError) {
  WithStandIns([](StoodIn& test) {
    test.Replace<RecordingUser>();
    const auto expect = [](const char* reason) {
      const ErrorState raised = ErrorOf([] { static_cast<void>(Gen_GetI18N("anna", "SLBBU0240")); });
      EXPECT_NE(raised.description.find(reason), std::string::npos) << raised.description;
    };
    {
      const TransactionContext offers_nothing(*test.Environment().classes);
      expect("the host offers no object 'Application'");
    }
    {
      const auto offers_none = host::TransactionHost(nullptr).Begin();
      expect("the host offers no object 'Application'");
    }
    const host::TransactionHost without_texts(std::make_shared<host::Application>(nullptr));
    const auto context = without_texts.Begin();
    expect("the host's Application has no I18NMessageManager");
  });
}

TEST(GenGetI18N, FailsUnderItsName) {
  WithStandIns([](StoodIn& test) {
    test.Replace<RecordingUser>();
    test.Record().fail_in = "Open";
    const ErrorState raised = ErrorOf([] { static_cast<void>(Gen_GetI18N("anna", "SLBBU0240")); });
    EXPECT_TRUE(
        raised.description.starts_with("\r\nERROR 0x3E8\r\n METHOD: Lib_General.Gen_GetI18N\r\n DESC: \r\n"))
        << raised.description;
  });
}

}  // namespace

}  // namespace talvex::test
