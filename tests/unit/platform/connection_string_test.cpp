#include "platform/database/connection_string.h"

#include <gtest/gtest.h>

namespace talvex::test {

namespace {

using platform::database::ConnectionString;

TEST(ConnectionString, FindsValuesByKeysInAnyCase) {
  const ConnectionString parts("Driver=SQLite; database = /srv/ledger.db ;Timeout=5");
  EXPECT_EQ(parts.Value("DRIVER"), "SQLite");
  EXPECT_EQ(parts.Value("Database"), "/srv/ledger.db");
  EXPECT_EQ(parts.Value("Timeout"), "5");
  EXPECT_EQ(parts.Value("Server"), "");
}

TEST(ConnectionString, AValueInBracesMayHoldASemicolon) {
  const ConnectionString parts("Driver={ODBC; the new one};Database=x");
  EXPECT_EQ(parts.Value("Driver"), "ODBC; the new one");
  EXPECT_EQ(parts.Value("Database"), "x");
}

TEST(ConnectionString, AValueMayHoldAnEqualsSign) {
  EXPECT_EQ(ConnectionString("Token=a=b;X=1").Value("Token"), "a=b");
}

TEST(ConnectionString, WithoutPartsHasNoValues) {
  for (const char* text : {"", ";", ";;", "no equals sign"}) {
    const ConnectionString parts(text);
    EXPECT_EQ(parts.Value("Driver"), "");
    EXPECT_EQ(parts.Shown(), "");
    EXPECT_EQ(parts.Text(), text);
  }
}

TEST(ConnectionString, ABraceInAValueInBracesIsWrittenTwice) {
  const ConnectionString parts("PWD={ab}};x=rest};Database=y;Driver={}};A=1");
  EXPECT_EQ(parts.Value("PWD"), "ab};x=rest");
  EXPECT_EQ(parts.Value("x"), "");
  EXPECT_EQ(parts.Value("Database"), "y");
  EXPECT_EQ(parts.Value("A"), "") << "the braces of Driver have no end";
}

TEST(ConnectionString, ABraceInsideAValueMeansNothing) {
  const ConnectionString parts("PWD=a{b;Database=/srv/x}y{.db;C=1");
  EXPECT_EQ(parts.Value("PWD"), "a{b");
  EXPECT_EQ(parts.Value("Database"), "/srv/x}y{.db");
  EXPECT_EQ(parts.Value("C"), "1");
}

TEST(ConnectionString, MasksEverySecretWhole) {
  struct Row {
    const char* text;
    const char* shown;
  };
  const Row rows[] = {{"PWD={ab}};x=rest};Database=y", "PWD=***;Database=y"},
                      {"PWD={ab}};x=rest}more;Database=y", "PWD=***;Database=y"},
                      {"PWD={ab}}", "PWD=***"},
                      {"PWD={ab;x=rest", "PWD=***"},
                      {"PWD={a}}}};b}}=c};D=1", "PWD=***;D=1"},
                      {" pwd = { ;x=1};D=1", "pwd=***;D=1"},
                      {"PWD=a{b;D=1", "PWD=***;D=1"},
                      {"PWD=a=b;D=1", "PWD=***;D=1"},
                      {"SslKeyPassword=x;AccessToken=y;client_secret=z",
                       "SslKeyPassword=***;AccessToken=***;"
                       "client_secret=***"},
                      {"Pqopt={password=x};UID=u", "Pqopt=***;UID=u"}};
  for (const Row& row : rows) EXPECT_EQ(ConnectionString(row.text).Shown(), row.shown) << row.text;
}

TEST(ConnectionString, NeverShowsAPassword) {
  const ConnectionString parts("Driver=x;UID=carol;pwd=s3cret;PASSWORD={s3;cret};Database=y");
  EXPECT_EQ(parts.Shown(), "Driver=x;UID=carol;pwd=***;PASSWORD=***;Database=y");
}

}  // namespace

}  // namespace talvex::test
