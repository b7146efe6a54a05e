#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "adapters/posix/system_files.h"
#include "platform/environment.h"
#include "platform/spreadsheet/workbook.h"
#include "support/error_of.h"
#include "support/temporary_folder.h"

namespace talvex::platform::spreadsheet {
namespace {

using automation::Currency;
using automation::Date;
using automation::Kind;
using automation::kNull;
using automation::Variant;
using test::ErrorNumberOf;
using test::ErrorOf;
namespace number = automation::error_number;

// Says what it was asked, and gives back a content of the test's.
class RecordingEngine final : public Engine {
 public:
  Content content{{{"First", {{{2, 2}, {1.5, ""}}, {{4, 3}, {3.0, "=B2*2"}}}}, {"Second", {}}},
                  {{"B2B-Sender", std::string("somebody"), true}}};
  std::vector<Sheet> formulas;
  mutable int reads = 0;
  mutable std::vector<std::vector<Edit>> rewrites;

  [[nodiscard]] Content Read(const std::string& /*path*/) const override {
    ++reads;
    return content;
  }
  [[nodiscard]] Rewritten Rewrite(const std::string& /*path*/,
                                  const std::vector<Edit>& edits) const override {
    rewrites.push_back(edits);
    return {"rewritten " + std::to_string(rewrites.size()), formulas};
  }
};

class SpreadsheetTest : public ::testing::Test {
 protected:
  SpreadsheetTest() : engine_(std::make_shared<RecordingEngine>()) {
    auto environment = std::make_shared<Environment>();
    environment->files = files_;
    environment->spreadsheets = engine_;
    environment_ = std::make_unique<Environment::ForThread>(environment);
  }

  std::shared_ptr<Workbook> Open() { return Workbook::Open(path_); }

  test::TemporaryFolder folder_;
  std::string path_ = folder_.Write("book.xls", "original");
  std::shared_ptr<Files> files_ = std::make_shared<adapters::posix::SystemFiles>();
  std::shared_ptr<RecordingEngine> engine_;
  std::unique_ptr<Environment::ForThread> environment_;
};

TEST_F(SpreadsheetTest, SheetsAreFoundByNameInAnyCaseAndByPosition) {
  const auto book = Open();
  EXPECT_EQ(book->SheetCount(), 2);
  EXPECT_EQ(book->Sheet("FIRST")->Name(), "First");
  EXPECT_EQ(book->Sheet(2)->Name(), "Second");
  EXPECT_TRUE(book->HasSheet("second"));
  EXPECT_EQ(ErrorNumberOf([&] { book->Sheet(0); }), number::kSubscriptOutOfRange);
  EXPECT_EQ(ErrorNumberOf([&] { book->Sheet(3); }), number::kSubscriptOutOfRange);
  EXPECT_EQ(ErrorNumberOf([&] { book->Sheet("Third"); }), number::kSubscriptOutOfRange);
}

TEST_F(SpreadsheetTest, TheUsedRangeIsThatOfTheCells) {
  const auto sheet = Open()->Sheet(1);
  EXPECT_EQ(sheet->FirstRow(), 2);
  EXPECT_EQ(sheet->FirstColumn(), 2);
  EXPECT_EQ(sheet->RowCount(), 3);
  EXPECT_EQ(sheet->ColumnCount(), 2);
  sheet->SetValue(1, 7, "wider");
  EXPECT_EQ(sheet->FirstRow(), 1);
  EXPECT_EQ(sheet->ColumnCount(), 6);
  const auto empty = Open()->Sheet(2);
  EXPECT_EQ(empty->FirstRow(), 1);
  EXPECT_EQ(empty->FirstColumn(), 1);
  EXPECT_EQ(empty->RowCount(), 0);
  EXPECT_EQ(empty->ColumnCount(), 0);
}

TEST_F(SpreadsheetTest, ValuesBecomeWhatACellHolds) {
  const Date day = Date::Civil(2026, 3, 15);
  const struct {
    Variant given;
    Variant held;
  } rows[] = {
      {std::int32_t{5}, 5.0},
      {std::int16_t{-1}, -1.0},
      {Currency::FromUnits(123400), 12.34},
      {0.1, 0.1},
      {true, true},
      {day, day},
      {"text", "text"},
      {"=1+1", "=1+1"},
      {"", Variant()},
      {kNull, Variant()},
      {Variant(), Variant()},
  };
  const auto sheet = Open()->Sheet(1);
  for (const auto& row : rows) {
    sheet->SetValue(2, 2, row.given);
    EXPECT_EQ(sheet->Value(2, 2), row.held);
    EXPECT_FALSE(sheet->HasFormula(2, 2));
  }
  EXPECT_EQ(ErrorNumberOf([&] { sheet->SetValue(1, 1, automation::Array()); }), number::kTypeMismatch);
  EXPECT_EQ(ErrorNumberOf([&] { sheet->SetValue(1, 1, std::numeric_limits<double>::infinity()); }),
            number::kOverflow);
  EXPECT_EQ(ErrorNumberOf([&] { sheet->SetValue(1, 1, "\xff"); }), number::kInvalidCall);
}

TEST_F(SpreadsheetTest, TextsUpToTheLongestThatACellHolds) {
  const auto sheet = Open()->Sheet(1);
  sheet->SetValue(1, 1, std::string(32767, 'x'));
  EXPECT_EQ(ErrorOf([&] { sheet->SetValue(1, 1, std::string(32768, 'x')); }).description,
            "A cell holds no text of more than 32,767 characters");
  std::string smiles;
  for (int count = 0; count < 16384; ++count) smiles += "\xF0\x9F\x99\x82";
  EXPECT_EQ(ErrorNumberOf([&] { sheet->SetValue(1, 1, smiles); }), number::kInvalidCall);
}

TEST_F(SpreadsheetTest, TheEdgesOfASheet) {
  const auto sheet = Open()->Sheet(1);
  sheet->SetValue(65536, 256, 1.0);
  EXPECT_EQ(sheet->Address(65536, 256), "IV65536");
  EXPECT_EQ(sheet->Address(7, 2), "B7");
  EXPECT_EQ(sheet->Address(1, 27), "AA1");
  const struct {
    std::int32_t row;
    std::int32_t column;
    std::string text;
  } rows[] = {
      {65537, 1, "A sheet has the rows 1 to 65,536: there is no row 65,537"},
      {0, 1, "A sheet has the rows 1 to 65,536: there is no row 0"},
      {1, 257, "A sheet has the columns 1 to 256: there is no column 257"},
      {1, -1000, "A sheet has the columns 1 to 256: there is no column -1,000"},
  };
  for (const auto& row : rows) {
    const auto error = ErrorOf([&] { sheet->SetValue(row.row, row.column, 1.0); });
    EXPECT_EQ(error.number, number::kSubscriptOutOfRange);
    EXPECT_EQ(error.description, row.text);
  }
  EXPECT_EQ(ErrorNumberOf([&] { sheet->InsertRows(5, 1); }), number::kSubscriptOutOfRange);
  EXPECT_EQ(ErrorNumberOf([&] { sheet->CopyRows(1, 2, 65536); }), number::kSubscriptOutOfRange);
  EXPECT_EQ(ErrorNumberOf([&] { sheet->InsertRows(5, -1); }), number::kInvalidCall);
}

TEST_F(SpreadsheetTest, FormulasGetTheirMark) {
  const auto sheet = Open()->Sheet(1);
  sheet->SetFormula(9, 1, "SUM(B2)");
  EXPECT_EQ(sheet->Formula(9, 1), "=SUM(B2)");
  EXPECT_TRUE(sheet->Value(9, 1).IsEmpty());
  sheet->SetValue(9, 1, 7.0);
  EXPECT_EQ(sheet->Formula(9, 1), "");
  EXPECT_EQ(ErrorNumberOf([&] { sheet->SetFormula(9, 1, "="); }), number::kInvalidCall);
  EXPECT_EQ(ErrorNumberOf([&] { sheet->SetFormula(9, 1, ""); }), number::kInvalidCall);
}

TEST_F(SpreadsheetTest, RowsMoveAndAreCopied) {
  const auto sheet = Open()->Sheet(1);
  sheet->InsertRows(3, 2);
  EXPECT_EQ(sheet->Value(2, 2), Variant(1.5));
  EXPECT_TRUE(sheet->Value(4, 3).IsEmpty());
  EXPECT_EQ(sheet->Value(6, 3), Variant(3.0));
  sheet->SetValue(8, 9, "overwritten");
  sheet->CopyRows(2, 1, 8);
  EXPECT_EQ(sheet->Value(8, 2), Variant(1.5));
  EXPECT_TRUE(sheet->Value(8, 9).IsEmpty());
  sheet->CopyRowStyles(2, 1, 6);
  EXPECT_EQ(sheet->Value(6, 3), Variant(3.0));
}

TEST_F(SpreadsheetTest, SheetNamesThatCannotBe) {
  const auto book = Open();
  for (const std::string& name : std::vector<std::string>{"", "SECOND", "a/b", "a:b", "[x]", "what?", "a*",
                                                          "a\\b", "'a", "a'", "\xff"}) {
    EXPECT_EQ(ErrorNumberOf([&] { book->AddSheet(name); }), number::kInvalidCall) << name;
  }
  EXPECT_EQ(ErrorNumberOf([&] { book->AddSheet(std::string(32, 'x')); }), number::kInvalidCall);
  book->AddSheet(std::string(31, 'x'));
  book->Sheet("Second")->SetName("SECOND");
  EXPECT_EQ(book->SheetCount(), 3);
  EXPECT_EQ(book->Sheet(2)->Name(), "SECOND");
}

TEST_F(SpreadsheetTest, PropertiesAreReplacedInAnyCase) {
  const auto book = Open();
  EXPECT_EQ(book->Property("b2b-SENDER"), Variant("somebody"));
  EXPECT_TRUE(book->Property("other").IsEmpty());
  EXPECT_EQ(book->PropertyTypeOf("other"), 0);
  book->SetProperty("B2B-SENDER", std::int32_t{12});
  EXPECT_EQ(book->PropertyCount(), 1);
  EXPECT_EQ(book->PropertyName(1), "B2B-Sender");
  EXPECT_EQ(book->Property("B2B-Sender"), Variant(12.0));
  EXPECT_FALSE(book->Properties()[0].linked);
  book->SetProperty("Yes", true);
  EXPECT_EQ(book->PropertyTypeOf("yes"), 40);
  EXPECT_EQ(ErrorNumberOf([&] { book->SetProperty("", 1.0); }), number::kInvalidCall);
  EXPECT_EQ(ErrorNumberOf([&] { book->SetProperty("x", kNull); }), number::kInvalidUseOfNull);
  EXPECT_EQ(ErrorNumberOf([&] { book->PropertyName(3); }), number::kSubscriptOutOfRange);
}

TEST_F(SpreadsheetTest, APropertyHoldsTheDatesThatTheFileHas) {
  const auto book = Open();
  const auto set = [&](std::int64_t seconds) { book->SetProperty("Day", Date::FromSeconds(seconds)); };
  for (const std::int64_t seconds : {std::int64_t{0}, std::int64_t{4294967295}}) {
    set(seconds);
    EXPECT_EQ(book->Property("Day"), Variant(Date::FromSeconds(seconds)));
  }
  for (const std::int64_t seconds : {std::int64_t{-1}, std::int64_t{4294967296}}) {
    const auto error = ErrorOf([&] { set(seconds); });
    EXPECT_EQ(error.number, number::kOverflow);
    EXPECT_EQ(error.description, "Overflow: the document property Day holds a date from 1970 to 2106 only");
  }
  EXPECT_EQ(book->Property("Day"), Variant(Date::FromSeconds(4294967295))) << "nothing is set then";
}

TEST_F(SpreadsheetTest, APropertyHoldsTheNamesAndTextsThatTheFileHas) {
  const auto book = Open();
  const std::string longest(65534, 'x');
  book->SetProperty("Text", longest);
  EXPECT_EQ(book->Property("Text"), Variant(longest));
  book->SetProperty(longest, "x");
  EXPECT_EQ(book->Property(longest), Variant("x"));
  const std::int32_t count = book->PropertyCount();
  for (const std::string& text : {longest + "x", longest.substr(3) + "\U0001F642"}) {
    EXPECT_EQ(ErrorOf([&] { book->SetProperty("Text", text); }).description,
              "The text of the document property Text is longer than the 65,534 bytes that a file holds");
    EXPECT_EQ(ErrorOf([&] { book->SetProperty(text, "x"); }).description,
              "The name of a document property is longer than the 65,534 bytes that a file holds");
  }
  for (const char* name : {"dc:title", "gsf:x", "meta:x", "msole:x", "xlsx:x"}) {
    EXPECT_EQ(ErrorNumberOf([&] { book->SetProperty(name, "x"); }), number::kInvalidCall) << name;
  }
  EXPECT_EQ(book->PropertyCount(), count);
  EXPECT_EQ(book->Property("Text"), Variant(longest)) << "nothing is set then";
}

TEST_F(SpreadsheetTest, CellsSetInTurnAreOneEditForEachSheet) {
  const auto book = Open();
  const auto first = book->Sheet(1);
  const auto second = book->Sheet(2);
  for (std::int32_t row = 1; row <= 3; ++row) {
    first->SetValue(row, 1, row);
    second->SetValue(row, 1, row);
  }
  first->SetValue(1, 1, "again");
  first->InsertRows(1, 1);
  first->SetValue(1, 1, "after");
  book->Save();
  ASSERT_EQ(engine_->rewrites.size(), 1U);
  const auto& edits = engine_->rewrites[0];
  ASSERT_EQ(edits.size(), 4U);
  const auto& cells = std::get<edit::SetCells>(edits[0]);
  EXPECT_EQ(cells.sheet, "First");
  EXPECT_EQ(cells.cells.Count(), 3U);
  EXPECT_EQ(cells.cells.Find({1, 1})->value, Variant("again"));
  EXPECT_EQ(std::get<edit::SetCells>(edits[1]).sheet, "Second");
  EXPECT_EQ(std::get<edit::InsertRows>(edits[2]).row, 1);
  EXPECT_EQ(std::get<edit::SetCells>(edits[3]).cells.Find({1, 1})->value, Variant("after"));
}

TEST_F(SpreadsheetTest, SavingAnUnchangedWorkbookStartsNothing) {
  const auto book = Open();
  EXPECT_FALSE(book->Changed());
  book->Save();
  EXPECT_EQ(files_->Read(path_), "original");
  book->Sheet(1)->SetValue(1, 1, 1.0);
  EXPECT_TRUE(book->Changed());
  book->Save();
  book->Save();
  book->SaveAs(path_, std::nullopt);
  EXPECT_FALSE(book->Changed());
  EXPECT_EQ(files_->Read(path_), "rewritten 1");
  EXPECT_EQ(engine_->rewrites.size(), 1U);
  EXPECT_EQ(engine_->reads, 1);
}

TEST_F(SpreadsheetTest, ANewWorkbookIsItsTemplateUntilItChanges) {
  const auto book = Workbook::FromTemplate(path_);
  EXPECT_EQ(book->Name(), "book.xls");
  EXPECT_EQ(book->Path(), "");
  EXPECT_EQ(ErrorNumberOf([&] { book->Save(); }), number::kFileAccess);
  const std::string target = folder_.Path("new.xls");
  book->SaveAs(target, std::nullopt);
  EXPECT_EQ(files_->Read(target), "original");
  EXPECT_EQ(book->Path(), target);
  EXPECT_EQ(book->Name(), "new.xls");
  EXPECT_TRUE(engine_->rewrites.empty());
}

TEST_F(SpreadsheetTest, ATakenNameIsKeptUnlessItIsToBeReplaced) {
  const auto book = Open();
  book->Sheet(1)->SetValue(1, 1, 1.0);
  const std::string taken = folder_.Write("taken.xls", "other");
  EXPECT_EQ(ErrorNumberOf([&] { book->SaveAs(taken, std::nullopt); }), number::kFileAlreadyExists);
  EXPECT_EQ(files_->Read(taken), "other");
  EXPECT_TRUE(engine_->rewrites.empty());
  EXPECT_TRUE(book->Changed());
  book->SaveAs(taken, true);
  EXPECT_EQ(files_->Read(taken), "rewritten 1");
  EXPECT_EQ(files_->Read(path_), "original");
}

TEST_F(SpreadsheetTest, AFileThatChangedMeanwhileIsNotWrittenOver) {
  const auto book = Open();
  book->Sheet(1)->SetValue(1, 1, 1.0);
  folder_.Write("book.xls", "somebody else's");
  const auto error = ErrorOf([&] { book->Save(); });
  EXPECT_EQ(error.number, number::kFileAccess);
  EXPECT_NE(error.description.find("has been changed since"), std::string::npos);
  EXPECT_EQ(files_->Read(path_), "somebody else's");
  EXPECT_TRUE(engine_->rewrites.empty());
}

TEST_F(SpreadsheetTest, FormulasHaveTheirNewValuesOnceSaved) {
  engine_->formulas = {{"First", {{{4, 3}, {42.0, "=B2*2"}}}}, {"Gone", {{{1, 1}, {1.0, "=1"}}}}};
  const auto book = Open();
  const auto sheet = book->Sheet(1);
  sheet->SetValue(2, 2, 21.0);
  EXPECT_EQ(sheet->Value(4, 3), Variant(3.0));
  book->Save();
  EXPECT_EQ(sheet->Value(4, 3), Variant(42.0));
}

TEST_F(SpreadsheetTest, CalculatingGivesFormulasTheirValuesAndKeepsTheChanges) {
  engine_->formulas = {{"First", {{{4, 3}, {42.0, "=B2*2"}}}}};
  const auto book = Open();
  const auto sheet = book->Sheet(1);
  book->Calculate();
  EXPECT_TRUE(engine_->rewrites.empty()) << "nothing was changed";
  sheet->SetValue(2, 2, 21.0);
  book->Calculate();
  EXPECT_EQ(sheet->Value(4, 3), Variant(42.0));
  EXPECT_TRUE(book->Changed());
  EXPECT_EQ(files_->Read(path_), "original");
  book->Save();
  ASSERT_EQ(engine_->rewrites.size(), 2U);
  EXPECT_EQ(engine_->rewrites[1].size(), 1U) << "the change is saved with the workbook";
  EXPECT_FALSE(book->Changed());
}

TEST_F(SpreadsheetTest, AClosedWorkbookAnswersNothing) {
  const auto book = Open();
  const auto sheet = book->Sheet(1);
  book->Close();
  book->Close();
  EXPECT_EQ(ErrorNumberOf([&] { static_cast<void>(book->Name()); }), number::kObjectIsClosed);
  EXPECT_EQ(ErrorNumberOf([&] { book->Save(); }), number::kObjectIsClosed);
  EXPECT_EQ(ErrorNumberOf([&] { sheet->Value(1, 1); }), number::kObjectIsClosed);
  EXPECT_EQ(ErrorNumberOf([&] { sheet->Address(1, 1); }), number::kObjectIsClosed);
}

TEST_F(SpreadsheetTest, IsReachedByName) {
  Application application;
  const Variant book = application.Call("open", path_);
  const auto& object = book.As<automation::ObjectRef>();
  const Variant sheet = object->Call("sheet", "first");
  EXPECT_EQ(sheet.As<automation::ObjectRef>()->Call("value", 2, 2), Variant(1.5));
  EXPECT_EQ(object->Get("name"), Variant("book.xls"));
}

TEST_F(SpreadsheetTest, WithoutAnEngineThereIsNoWorkbook) {
  auto environment = std::make_shared<Environment>();
  environment->files = files_;
  const Environment::ForThread other(environment);
  EXPECT_EQ(ErrorNumberOf([&] { Open(); }), number::kCannotCreateObject);
}

}  // namespace
}  // namespace talvex::platform::spreadsheet
