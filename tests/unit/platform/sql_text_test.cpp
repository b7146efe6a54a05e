#include "platform/database/sql_text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/database/driver.h"

namespace talvex::platform::database {
namespace {

std::vector<std::string> Tokens(std::string_view text) {
  std::vector<std::string> tokens;
  SqlTokenizer tokenizer(text);
  for (SqlToken token = tokenizer.Next(); token.kind != SqlTokenKind::End; token = tokenizer.Next()) {
    tokens.emplace_back(token.text);
  }
  return tokens;
}

std::vector<SqlTokenKind> Kinds(std::string_view text) {
  std::vector<SqlTokenKind> kinds;
  SqlTokenizer tokenizer(text);
  do {
    kinds.push_back(tokenizer.Next().kind);
  } while (kinds.back() != SqlTokenKind::End);
  return kinds;
}

// The shape's text and behind it its parameters: "?" for one that the caller gives, else the quoted text in
// "<>".
std::string Shape(std::string_view text, SqlDialect dialect = {}) {
  SqlShape shape(dialect);
  shape.Read(text);
  std::string result = shape.Text();
  for (const auto& parameter : shape.Parameters()) {
    result += parameter.given ? " ?" : " <" + std::string(parameter.literal) + ">";
  }
  return result;
}

void ExpectRefused(std::string_view text, std::int32_t native_error, std::string_view part) {
  SqlShape shape;
  try {
    shape.Read(text);
    ADD_FAILURE() << "was read: " << text;
  } catch (const Fault& fault) {
    EXPECT_EQ(fault.Kind(), FaultKind::Other) << text;
    EXPECT_EQ(fault.NativeError(), native_error) << text;
    EXPECT_EQ(fault.SqlState(), "42000") << text;
    EXPECT_NE(std::string_view(fault.what()).find(part), std::string_view::npos) << fault.what();
  }
}

TEST(RefuseTransactionControl, KnowsItByTheFirstWord) {
  for (const char* const text :
       {"COMMIT", "commit transaction", "/* why */ Rollback", "BEGIN TRANSACTION", "START TRANSACTION", "END",
        "ABORT", "SAVE TRANSACTION A", "SAVEPOINT A", "RELEASE A"}) {
    EXPECT_THROW(RefuseTransactionControl(text), Fault) << text;
  }
  for (const char* const text : {"SELECT 1", "CREATE TABLE COMMITS (A INTEGER)", "DELETE T", "[COMMIT]"})
    EXPECT_NO_THROW(RefuseTransactionControl(text)) << text;
}

TEST(SqlTokenizer, SplitsATextIntoItsTokens) {
  EXPECT_EQ(Tokens("SELECT [a b],\"c\".d FROM t WHERE x>=-1.5E-3 AND y='it''s';"),
            (std::vector<std::string>{"SELECT", "[a b]", ",", "\"c\"", ".", "d", "FROM", "t", "WHERE", "x",
                                      ">", "=", "-", "1.5E-3", "AND", "y", "=", "'it''s'", ";"}));
}

TEST(SqlTokenizer, TellsTheKindsApart) {
  using enum SqlTokenKind;
  EXPECT_EQ(Kinds("a [b] \"c\" 'd' N'e' n'' 1 ? ; ( -- f\n/* g */ "),
            (std::vector<SqlTokenKind>{Word, Name, Name, Literal, Literal, Literal, Number, Parameter,
                                       Semicolon, Symbol, Comment, Comment, End}));
}

TEST(SqlTokenizer, AnNBelongsToALiteralOnlyWhenItStandsAloneRightBeforeIt) {
  EXPECT_EQ(Tokens("N'a' n 'b' IN'c'"), (std::vector<std::string>{"N'a'", "n", "'b'", "IN", "'c'"}));
}

TEST(SqlTokenizer, WordsHoldLettersBeyondAsciiAndTheSignsOfNames) {
  EXPECT_EQ(Tokens("Größe_1 @x #t a$b"), (std::vector<std::string>{"Größe_1", "@x", "#t", "a$b"}));
}

TEST(SqlTokenizer, NumbersKeepTheSignOfTheirExponentOnly) {
  EXPECT_EQ(Tokens("1E+5 1+5 0xE+1 12.50"),
            (std::vector<std::string>{"1E+5", "1", "+", "5", "0xE", "+", "1", "12.50"}));
}

TEST(SqlTokenizer, QuotesEndAtTheirOwnMarkThatIsNotDoubled) {
  EXPECT_EQ(Tokens("'a;\"[--' \"b'\"\"c\" [d]]'e] ''''"),
            (std::vector<std::string>{"'a;\"[--'", "\"b'\"\"c\"", "[d]]'e]", "''''"}));
}

TEST(SqlTokenizer, CommentsHoldQuotesAndNest) {
  EXPECT_EQ(Tokens("a -- it's ; /*\nb /* it's /* ; */ [ */ c"),
            (std::vector<std::string>{"a", "-- it's ; /*", "b", "/* it's /* ; */ [ */", "c"}));
}

TEST(SqlTokenizer, AStrokeOrAMinusAloneIsASymbol) {
  EXPECT_EQ(Tokens("a/b-c - -d"), (std::vector<std::string>{"a", "/", "b", "-", "c", "-", "-", "d"}));
}

TEST(SqlTokenizer, AnEmptyTextHasNoTokens) {
  EXPECT_TRUE(Tokens("").empty());
  EXPECT_TRUE(Tokens(std::string_view()).empty());
  EXPECT_TRUE(Tokens(" \t\r\n").empty());
}

TEST(SqlTokenizer, RefusesWhatHasNoEnd) {
  ExpectRefused("SELECT 'a", 105, "character 8");
  ExpectRefused("SELECT 'a''", 105, "character 8");
  ExpectRefused("SELECT N'a", 105, "character 9");
  ExpectRefused("SELECT [a", 105, "character 8");
  ExpectRefused("SELECT \"a", 105, "character 8");
  ExpectRefused("SELECT /* a", 113, "character 8");
  ExpectRefused("SELECT /* /* */ a", 113, "character 8");
  ExpectRefused("SELECT /*/", 113, "character 8");
}

TEST(SqlText, ANameLosesItsQuotes) {
  const auto name = [](std::string_view text) { return SqlNameText(SqlTokenizer(text).Next()); };
  EXPECT_EQ(name("BUDGET"), "BUDGET");
  EXPECT_EQ(name("[a ]] b]"), "a ] b");
  EXPECT_EQ(name("\"a \"\" b\""), "a \" b");
  EXPECT_EQ(name("[]"), "");
}

TEST(SqlText, FindsTheTableThatAnInsertWritesTo) {
  EXPECT_EQ(InsertTarget("INSERT INTO BUDGET (A) VALUES (1)"), "BUDGET");
  EXPECT_EQ(InsertTarget("insert [My Table] values (1)"), "My Table");
  EXPECT_EQ(InsertTarget("/* x */ INSERT -- y\n INTO dbo.[T] SELECT 1"), "T");
  EXPECT_EQ(InsertTarget("INSERT INTO a.b.c DEFAULT VALUES"), "c");
  EXPECT_EQ(InsertTarget("UPDATE T SET A = 1"), std::nullopt);
  EXPECT_EQ(InsertTarget(""), std::nullopt);
}

TEST(SqlText, KnowsTheSettingOfTheIsolationLevel) {
  EXPECT_TRUE(SetsIsolationLevel("set TRANSACTION ISOLATION LEVEL READ COMMITTED"));
  EXPECT_TRUE(SetsIsolationLevel("SET /* x */ transaction isolation level serializable;"));
  EXPECT_FALSE(SetsIsolationLevel("SET TRANSACTION"));
  EXPECT_FALSE(SetsIsolationLevel("SET NOCOUNT ON"));
}

TEST(SqlShape, PutsParametersInPlaceOfQuotedTexts) {
  EXPECT_EQ(Shape("SELECT * FROM T WHERE A='x' AND B=N'y''s' AND C=''"),
            "SELECT * FROM T WHERE A=? AND B=? AND C=? <x> <y's> <>");
  EXPECT_EQ(Shape("INSERT INTO T (A,B) VALUES ('x',1)"), "INSERT INTO T (A,B) VALUES (?,1) <x>");
  EXPECT_EQ(Shape("update T set A='x' where B='y'"), "update T set A=? where B=? <x> <y>");
  EXPECT_EQ(Shape("DELETE FROM T WHERE A='x'"), "DELETE FROM T WHERE A=? <x>");
}

TEST(SqlShape, ReadsDoubledQuotesAsOne) {
  EXPECT_EQ(Shape("DELETE T WHERE A='''' OR A='a''''b' OR A='''c''' OR A='d'"),
            "DELETE T WHERE A=? OR A=? OR A=? OR A=? <'> <a''b> <'c'> <d>");
}

TEST(SqlShape, TextsThatDifferInQuotedTextsOnlyHaveOneShape) {
  const std::string first = Shape("SELECT A FROM T WHERE B='one'");
  const std::string second = Shape("SELECT A FROM T WHERE B=N'o''ther'");
  EXPECT_EQ(first, "SELECT A FROM T WHERE B=? <one>");
  EXPECT_EQ(second, "SELECT A FROM T WHERE B=? <o'ther>");
}

TEST(SqlShape, KeepsTheOrderOfGivenParametersAmongTheQuotedTexts) {
  EXPECT_EQ(Shape("UPDATE T SET A=?, B='x', C=? WHERE D='y' AND E=?"),
            "UPDATE T SET A=?, B=?, C=? WHERE D=? AND E=? ? <x> ? <y> ?");
}

TEST(SqlShape, LeavesMarksInsideQuotesAlone) {
  EXPECT_EQ(Shape("SELECT [a'b?], \"c'd;\" FROM T WHERE A='e?;[\"--/*'"),
            "SELECT [a'b?], \"c'd;\" FROM T WHERE A=? <e?;[\"--/*>");
}

TEST(SqlShape, CommentsBecomeABlank) {
  EXPECT_EQ(Shape("SELECT A -- it's\nFROM T/* 'x' ? ; */WHERE B='y'"), "SELECT A  \nFROM T WHERE B=? <y>");
}

TEST(SqlShape, QuotedTextsThatNameColumnsStay) {
  EXPECT_EQ(Shape("SELECT 'x', F('y') AS 'z' FROM T WHERE A='w'"),
            "SELECT 'x', F('y') AS 'z' FROM T WHERE A=? <w>");
  EXPECT_EQ(Shape("SELECT (SELECT MAX(B) FROM U WHERE C='c') FROM T WHERE A='w'"),
            "SELECT (SELECT MAX(B) FROM U WHERE C='c') FROM T WHERE A=? <w>");
  EXPECT_EQ(Shape("SELECT * FROM (SELECT 'x' FROM U WHERE C='c') V WHERE A='w'"),
            "SELECT * FROM (SELECT 'x' FROM U WHERE C=?) V WHERE A=? <c> <w>");
  EXPECT_EQ(Shape("WITH V AS (SELECT 'x' AS B FROM U) SELECT 'y' FROM V WHERE B='z'"),
            "WITH V AS (SELECT 'x' AS B FROM U) SELECT 'y' FROM V WHERE B=? <z>");
  EXPECT_EQ(Shape("SELECT 'x'"), "SELECT 'x'");
  EXPECT_EQ(Shape("INSERT INTO T (A) VALUES ('x') RETURNING 'y'"),
            "INSERT INTO T (A) VALUES (?) RETURNING 'y' <x>");
}

TEST(SqlShape, QuotedTextsThatGroupOrOrderStay) {
  EXPECT_EQ(Shape("SELECT A FROM T WHERE B='x' GROUP BY A||'y' ORDER BY A||'z'"),
            "SELECT A FROM T WHERE B=? GROUP BY A||'y' ORDER BY A||'z' <x>");
  EXPECT_EQ(Shape("SELECT A FROM (SELECT B FROM T ORDER BY B||'y') WHERE B='x'"),
            "SELECT A FROM (SELECT B FROM T ORDER BY B||'y') WHERE B=? <x>");
}

TEST(SqlShape, QuotedTextsInConditionsOnSelectionsAreParameters) {
  EXPECT_EQ(Shape("DELETE T WHERE A IN (SELECT B FROM U WHERE C='x') AND D='y'"),
            "DELETE T WHERE A IN (SELECT B FROM U WHERE C=?) AND D=? <x> <y>");
}

TEST(SqlShape, OtherStatementsKeepTheirQuotedTexts) {
  EXPECT_EQ(Shape("CREATE TABLE T (A TEXT DEFAULT 'x')"), "CREATE TABLE T (A TEXT DEFAULT 'x')");
  EXPECT_EQ(Shape("PRAGMA foo = 'x'"), "PRAGMA foo = 'x'");
  EXPECT_EQ(Shape("SET x 'y'"), "SET x 'y'");
}

TEST(SqlShape, ADigitBehindAQuotedTextDoesNotNumberTheParameter) {
  EXPECT_EQ(Shape("SELECT A FROM T WHERE B='x'1"), "SELECT A FROM T WHERE B=? 1 <x>");
}

TEST(SqlShape, AnEndlessListIsLiftedUpToALimit) {
  std::string text = "SELECT A FROM T WHERE B IN ('0'";
  for (int i = 1; i < 1500; ++i) text += ",'" + std::to_string(i) + "'";
  text += ")";
  SqlShape shape;
  shape.Read(text);
  EXPECT_EQ(shape.Parameters().size(), 1000U);
  EXPECT_EQ(shape.Parameters().back().literal, "999");
  EXPECT_TRUE(shape.Text().ends_with(",?,'1000','1001'" + text.substr(text.find(",'1002'"))));
}

TEST(SqlShape, KnowsTheVerb) {
  const auto verb = [](std::string_view text) {
    SqlShape shape;
    shape.Read(text);
    return shape.Verb();
  };
  EXPECT_EQ(verb(" -- x\n select 1"), SqlVerb::Select);
  EXPECT_EQ(verb("INSERT T VALUES (1)"), SqlVerb::Insert);
  EXPECT_EQ(verb("Update T SET A=1"), SqlVerb::Update);
  EXPECT_EQ(verb("DELETE T"), SqlVerb::Delete);
  EXPECT_EQ(verb("WITH a AS (SELECT 1) SELECT 1"), SqlVerb::With);
  EXPECT_EQ(verb("SET x"), SqlVerb::Set);
  EXPECT_EQ(verb("CREATE TABLE T (A)"), SqlVerb::Other);
  EXPECT_EQ(verb("[select] 1"), SqlVerb::Other);
}

TEST(SqlShape, WritesTheFromOfADeleteWhereTheDatabaseWantsIt) {
  const SqlDialect dialect{.delete_takes_from = true};
  EXPECT_EQ(Shape("DELETE T WHERE A='x'", dialect), "DELETE FROM T WHERE A=? <x>");
  EXPECT_EQ(Shape("DELETE/* from */[from] WHERE A=1", dialect), "DELETE FROM [from] WHERE A=1");
  EXPECT_EQ(Shape("delete from T", dialect), "delete from T");
  EXPECT_EQ(Shape("DELETE T"), "DELETE T");
}

TEST(SqlShape, LeavesOutThePrefixOfNationalTextsWhereTheDatabaseDoesNotKnowIt) {
  EXPECT_EQ(Shape("SELECT N'x' FROM T", {.lacks_national_text = true}), "SELECT 'x' FROM T");
  EXPECT_EQ(Shape("SELECT N'x' FROM T"), "SELECT N'x' FROM T");
}

TEST(SqlShape, EndsAtTheSemicolon) {
  EXPECT_EQ(Shape("SELECT A FROM T WHERE B='x;y' ; "), "SELECT A FROM T WHERE B=?  <x;y>");
  EXPECT_EQ(Shape("SELECT 1;-- it's all\n/* ; */ "), "SELECT 1");
}

TEST(SqlShape, RefusesTextBehindTheFirstStatement) {
  ExpectRefused("DELETE FROM T; SELECT 1", 102, "character 16");
  ExpectRefused("SELECT 1;;", 102, "character 10");
  ExpectRefused("SELECT 1; -- x\n'y'", 102, "character 16");
  ExpectRefused("SELECT 1; /* x */ ?", 102, "character 19");
  ExpectRefused("SELECT 1; 'x", 105, "character 11");
}

TEST(SqlShape, RefusesATextWithoutAStatement) {
  ExpectRefused("", 102, "no statement");
  ExpectRefused("  -- x\n", 102, "no statement");
  ExpectRefused(";", 102, "no statement");
  ExpectRefused("; SELECT 1", 102, "no statement");
}

TEST(SqlShape, OneObjectReadsManyStatements) {
  SqlShape shape;
  shape.Read("SELECT (('a'");
  shape.Read("DELETE T WHERE A='b' AND B=?");
  EXPECT_EQ(shape.Verb(), SqlVerb::Delete);
  EXPECT_EQ(shape.Text(), "DELETE T WHERE A=? AND B=?");
  ASSERT_EQ(shape.Parameters().size(), 2U);
  EXPECT_EQ(shape.Parameters()[0].literal, "b");
  EXPECT_TRUE(shape.Parameters()[1].given);
}

TEST(SqlShape, SurvivesParenthesesOfAnyDepth) {
  const std::string open(200, '(');
  const std::string close(210, ')');
  EXPECT_EQ(Shape("SELECT A FROM T WHERE " + open + "B='x'" + close + " AND C='y'"),
            "SELECT A FROM T WHERE " + open + "B=?" + close + " AND C=? <x> <y>");
}

}  // namespace
}  // namespace talvex::platform::database
