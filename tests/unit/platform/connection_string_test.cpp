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

TEST(ConnectionString, NeverShowsAPassword) {
  const ConnectionString parts("Driver=x;UID=carol;pwd=s3cret;PASSWORD={s3;cret};Database=y");
  EXPECT_EQ(parts.Shown(), "Driver=x;UID=carol;pwd=***;PASSWORD=***;Database=y");
}

}  // namespace

}  // namespace talvex::test
