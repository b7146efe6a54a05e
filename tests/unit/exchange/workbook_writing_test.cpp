#include "automation/transaction_context.h"
#include "services/lib_general.h"
#include "support/failing_files.h"
#include "unit/exchange/workbook_world.h"

namespace talvex::test {
namespace {

using automation::Date;
using automation::kNull;
using automation::Variant;
using platform::spreadsheet::PropertyType;
using ::testing::HasSubstr;
namespace number = automation::error_number;

const std::string kOneValue = OnLines("<v B2BVALUEPOS='A1'>new</v>");

TEST(TransformXMLToExcel, ANewWorkbookOfATemplateIsSavedUnderItsName) {
  WithWorkbooks([](WorkbookWorld& world) {
    const std::string base = world.Make("base.XLT", {{MadeSheet("Lines", {})}, {}});
    const std::string target = world.Path("out.xls");
    std::string error;
    const auto book = BudgetExcel().TransformXMLToExcel(kOneValue, EWriteMode::Create, 0, true, error,
                                                        "d.reed", base, target);
    ASSERT_NE(book, nullptr) << error;
    EXPECT_EQ(error, "");
    EXPECT_EQ(book->Path(), target);
    EXPECT_FALSE(book->Changed());
    EXPECT_EQ(platform::Environment::Current().files->Read(target), "rewritten");
    EXPECT_EQ(platform::Environment::Current().files->Read(base), "original");
  });
}

TEST(TransformXMLToExcel, WithoutMarkersTheTemplateComesOutAsItIs) {
  WithWorkbooks([](WorkbookWorld& world) {
    const std::string base = world.Make("base.XLT", {{MadeSheet("Lines", {{"A1", "x"}})}, {}});
    const std::string target = world.Path("out.xls");
    std::string error;
    EXPECT_NE(
        BudgetExcel().TransformXMLToExcel("<a/>", EWriteMode::Create, 0, true, error, "d.reed", base, target),
        nullptr);
    EXPECT_EQ(platform::Environment::Current().files->Read(target), "original");
    EXPECT_TRUE(world.Engine().rewrites.empty());
  });
}

TEST(TransformXMLToExcel, WithoutADestinationTheWorkbookIsNotSaved) {
  WithWorkbooks([](WorkbookWorld& world) {
    const std::string base = world.Make("base.xls", {{MadeSheet("Lines", {})}, {}});
    for (const std::optional<std::string>& target : {std::optional<std::string>(), {std::string("  ")}}) {
      std::string error;
      const auto book = BudgetExcel().TransformXMLToExcel(kOneValue, EWriteMode::Update, 7, false, error,
                                                          "d.reed", base, target);
      ASSERT_NE(book, nullptr) << error;
      EXPECT_TRUE(book->Changed());
      EXPECT_EQ(book->Path(), base);
    }
    EXPECT_EQ(platform::Environment::Current().files->Read(base), "original");
  });
}

struct WritingFailure {
  const char* what;
  std::string xml;
  std::int32_t mode;
  bool is_template;
  const char* file;
  std::string error;
};

TEST(TransformXMLToExcel, EachFailureAddsOneLineAndLeavesNothingBehind) {
  const WritingFailure rows[] = {
      {"no XML", "<a>", 20, true, "a.XLT", kNotWritten},
      {"no text", "", 20, true, "a.XLT", kNotWritten},
      {"no write mode", "<a/>", 40, true, "a.XLT", kNotWritten},
      {"no template", "<a/>", 20, true, "a.xls", kNoWorkbook},
      {"no workbook", "<a/>", 20, false, "a.XLT", kNoWorkbook},
      {"a position", OnLines("<v B2BVALUEPOS='A65537'>x</v>"), 20, true, "a.XLT", kNoPosition},
      {"a placeholder", OnLines("<v B2BVALUEPOS='A1' B2BVALUE='[%X%]'/>"), 20, true, "a.XLT", kNotFilledIn},
      {"a property", "<a B2BPROPLABEL='p' B2BPROPVALUE='x' B2BPROPTYPE='number'/>", 20, true, "a.XLT",
       kNotWritten},
      {"a property's text", "<a B2BPROPLABEL='p' B2BPROPVALUE='" + std::string(65535, 'x') + "'/>", 20, true,
       "a.XLT", kNotWritten},
      {"a property's name", "<a B2BPROPLABEL='meta:p' B2BPROPVALUE='x'/>", 20, true, "a.XLT", kNotWritten},
  };
  WithWorkbooks([&](WorkbookWorld& world) {
    for (const WritingFailure& row : rows) {
      const std::string base = world.Make(row.file, {{MadeSheet("Lines", {})}, {}});
      std::string error = "first";
      const auto book =
          BudgetExcel().TransformXMLToExcel(row.xml, static_cast<EWriteMode>(row.mode), 0, row.is_template,
                                            error, "d.reed", base, world.Path("out.xls"));
      EXPECT_EQ(book, nullptr) << row.what;
      EXPECT_EQ(error, "first" + row.error) << row.what;
      EXPECT_FALSE(platform::Environment::Current().files->Exists(world.Path("out.xls"))) << row.what;
    }
    std::string error;
    EXPECT_EQ(BudgetExcel().TransformXMLToExcel("<a/>", EWriteMode::Create, 0, true, error, "d.reed"),
              nullptr);
    EXPECT_EQ(error, kNoWorkbook);
  });
}

TEST(TransformXMLToExcel, AFileThatCannotBeWrittenIsAFailure) {
  WithWorkbooks([](WorkbookWorld& world) {
    const std::string base = world.Make("base.XLT", {{MadeSheet("Lines", {})}, {}});
    const std::string target = world.Path("out.xls");
    const auto write = [&] {
      std::string error;
      EXPECT_EQ(BudgetExcel().TransformXMLToExcel(kOneValue, EWriteMode::Create, 0, true, error, "d.reed",
                                                  base, target),
                nullptr);
      return error;
    };
    auto& environment = world.Test().Environment();
    const auto real = environment.files;
    const auto files = std::make_shared<FailingFiles>(real);
    files->FailAt(FailingFiles::Call::WriteNew, 1,
                  automation::Error(number::kFileAccess, "Files", "disk full"));
    environment.files = files;
    EXPECT_EQ(write(), kNotWritten);
    EXPECT_FALSE(real->Exists(target));
    EXPECT_THAT(world.Test().Record().log.back().text, HasSubstr("disk full"));

    world.Engine().rewrite_failure = automation::Error(number::kInvalidCall, "Engine", "No formula");
    EXPECT_EQ(write(), kNotWritten);
    EXPECT_FALSE(real->Exists(target));

    world.Engine().rewrite_failure.reset();
    real->Replace(target, "somebody's");
    EXPECT_EQ(write(), kNotWritten);
    EXPECT_EQ(real->Read(target), "somebody's");
  });
}

struct PropertyToSet {
  const char* type;
  Variant given;
  Variant held;  // Empty: refused.
};

TEST(SetCustomerPropertyInExcel, GivesThePropertyItsType) {
  const Date day = Date::Civil(2026, 3, 15);
  const PropertyToSet rows[] = {
      {"text", "x", "x"},
      {"", 12.5, "12.5"},
      {"other", true, "True"},
      {"TEXT", "", ""},
      {"number", "12.5", 12.5},
      {"Number", std::int32_t{3}, 3.0},
      {"number", "x", {}},
      {"number", "", {}},
      {"number", kNull, {}},
      {"date", "3/15/2026", day},
      {"DATE", day, day},
      {"date", "15", {}},
      {"date", "2/30/2026", {}},
      {"date", "12/31/1969", {}},
      {"date", "1/1/1970", Date::Civil(1970, 1, 1)},
      {"date", "2/7/2106", Date::Civil(2106, 2, 7)},
      {"date", "2/8/2106", {}},
      {"boolean", "yes", true},
      {"boolean", "TRUE", true},
      {"boolean", true, true},
      {"boolean", "false", false},
      {"boolean", "1", false},
      {"boolean", "anything", false},
      {"text", kNull, {}},
  };
  WithWorkbooks([&](WorkbookWorld& world) {
    for (const PropertyToSet& row : rows) {
      BudgetExcel excel;
      auto book = world.Write("<a/>");
      std::string error;
      excel.SetCustomerPropertyInExcel(book, "Name", row.given, row.type, error);
      EXPECT_EQ(excel.GetCustomerPropertyFromExcel(book, "NAME"), row.held) << row.type;
      EXPECT_EQ(error.empty(), !row.held.IsEmpty()) << row.type << " " << error;
    }
  });
}

TEST(SetCustomerPropertyInExcel, ReplacesThePropertyOfThatNameInAnyCase) {
  WithWorkbooks([](WorkbookWorld& world) {
    BudgetExcel excel;
    const std::string path = world.Make("a.xls", {{}, {{"B2B-Show", std::string("x"), true}}});
    auto book = Workbook::Open(path);
    std::string error;
    excel.SetCustomerPropertyInExcel(book, "b2b-SHOW", "7", "number", error);
    EXPECT_EQ(error, "");
    ASSERT_EQ(book->Properties().size(), 1U);
    EXPECT_EQ(book->Properties()[0].name, "B2B-Show");
    EXPECT_EQ(book->Properties()[0].value, Variant(7.0));
    EXPECT_FALSE(book->Properties()[0].linked);
  });
}

// A thread that has asked for another user before knows no locale for the empty one, and the user service
// does not know it at all.
TEST(SetCustomerPropertyInExcel, AsksForNoUserWhenItFails) {
  WithWorkbooks([](WorkbookWorld& world) {
    BudgetExcel excel;
    std::shared_ptr<Workbook> none;
    std::string error;
    const auto context = world.Test().Site().Host().Transactions().Begin();
    static_cast<void>(Lib_General::Gen_GetI18N("nadine", "SLBBU0347"));
    const auto calls = world.Test().Record().calls;
    world.Test().Record().fail_in = "Open";
    excel.SetCustomerPropertyInExcel(none, "Name", "x", "text", error);
    EXPECT_EQ(error, kNotWritten);
    EXPECT_EQ(world.Test().Record().calls, calls);
    EXPECT_EQ(world.Test().Record().log.size(), 1U);
    static_cast<void>(context->Commit());
  });
}

TEST(SetCustomerPropertyInExcel, CollectsItsFailures) {
  WithWorkbooks([](WorkbookWorld& world) {
    BudgetExcel excel;
    std::shared_ptr<Workbook> none;
    std::string error;
    excel.SetCustomerPropertyInExcel(none, "Name", "x", "text", error);
    EXPECT_EQ(error, kNotWritten);
    ASSERT_EQ(world.Test().Record().log.size(), 1U);
    EXPECT_THAT(world.Test().Record().log[0].text, HasSubstr("Object not set: the workbook"));
  });
}

TEST(TransformXMLToExcel, SetsTheDocumentPropertiesOfTheMarkup) {
  WithWorkbooks([](WorkbookWorld& world) {
    const auto book = world.Write(
        "<a B2BORIGINALFILENAME='c:\\in\\budgets.xls'><b B2BPROPLABEL='B2B-SENDER' B2BPROPVALUE='a;b'/>"
        "<b B2BPROPLABEL='Count' B2BPROPVALUE='12' B2BPROPTYPE='number'/>"
        "<b B2BPROPLABEL='Day' B2BPROPVALUE='2026-03-15' B2BPROPTYPE='date'/>"
        "<b B2BPROPLABEL='Yes' B2BPROPVALUE='Yes' B2BPROPTYPE='boolean'/>"
        "<b B2BPROPLABEL='Only'/><b B2BPROPVALUE='x'/></a>");
    ASSERT_NE(book, nullptr) << world.Error();
    EXPECT_EQ(book->PropertyCount(), 5);
    EXPECT_EQ(book->Property("B2B-SENDER"), Variant("a;b"));
    EXPECT_EQ(book->PropertyTypeOf("Count"), static_cast<std::int32_t>(PropertyType::Number));
    EXPECT_EQ(book->Property("Day"), Variant(Date::Civil(2026, 3, 15)));
    EXPECT_EQ(book->Property("Yes"), Variant(true));
    EXPECT_EQ(book->Property("B2B-ORIGINALNAME"), Variant("c:\\in\\budgets.xls"));
  });
}

TEST(CloseWorkBook, ClosesAndLetsGo) {
  WithWorkbooks([](WorkbookWorld& world) {
    const auto book = world.Write(kOneValue);
    std::shared_ptr<Workbook> held = book;
    BudgetExcel().CloseWorkBook(held);
    EXPECT_EQ(held, nullptr);
    EXPECT_EQ(ErrorNumberOf([&] { static_cast<void>(book->Name()); }), number::kObjectIsClosed);
    BudgetExcel().CloseWorkBook(held);
  });
}

TEST(WriteExcelObjectToFile, SavesAndClosesWhenThatIsWanted) {
  for (const bool close : {false, true}) {
    WithWorkbooks([&](WorkbookWorld& world) {
      auto book = world.Write(kOneValue);
      BudgetExcel().WriteExcelObjectToFile(book, world.Path("out.xls"), close);
      EXPECT_EQ(platform::Environment::Current().files->Read(world.Path("out.xls")), "rewritten");
      EXPECT_EQ(book == nullptr, close);
    });
  }
}

TEST(WriteExcelObjectToFile, RaisesItsFailuresAndVotesAbort) {
  WithWorkbooks([](WorkbookWorld& world) {
    auto book = world.Write(kOneValue);
    platform::Environment::Current().files->Replace(world.Path("out.xls"), "somebody's");
    const auto context = world.Test().Site().Host().Transactions().Begin();
    const auto error =
        ErrorOf([&] { BudgetExcel().WriteExcelObjectToFile(book, world.Path("out.xls"), true); });
    EXPECT_EQ(error.number, number::kFileAlreadyExists);
    EXPECT_THAT(error.description, HasSubstr(" METHOD: Talvex.BudgetExcel.WriteExcelObjectToFile\r\n"));
    EXPECT_NE(book, nullptr);
    EXPECT_FALSE(context->Commit());
    std::shared_ptr<Workbook> none;
    EXPECT_EQ(ErrorNumberOf([&] { BudgetExcel().WriteExcelObjectToFile(none, "x.xls", false); }),
              number::kObjectNotSet);
    EXPECT_EQ(ErrorNumberOf([&] { BudgetExcel().GetCustomerPropertyFromExcel(none, "x"); }),
              number::kObjectNotSet);
  });
}

struct MemberRow {
  const automation::EnumerationInfo* enumeration;
  const char* name;
  std::int32_t value;
};

TEST(ExchangeTypes, MembersHaveTheirNumbers) {
  const MemberRow rows[] = {
      {&DescribeEnumeration(EWriteMode{}), "Append", 10},
      {&DescribeEnumeration(EWriteMode{}), "Create", 20},
      {&DescribeEnumeration(EWriteMode{}), "Update", 30},
      {&DescribeEnumeration(EExcelSearchOptions{}), "GreaterThan", 10},
      {&DescribeEnumeration(EExcelSearchOptions{}), "LessThan", 20},
      {&DescribeEnumeration(EExcelSearchOptions{}), "Equals", 30},
      {&DescribeEnumeration(EExcelIndexMode{}), "Sequence", 10},
      {&DescribeEnumeration(EExcelIndexMode{}), "Scattered", 20},
      {&DescribeEnumeration(EMsoDocProperties{}), "EMsoPropertyTypeString", 10},
      {&DescribeEnumeration(EMsoDocProperties{}), "EMsoPropertyTypeNumber", 20},
      {&DescribeEnumeration(EMsoDocProperties{}), "EMsoPropertyTypeDate", 30},
      {&DescribeEnumeration(EMsoDocProperties{}), "EMsoPropertyTypeBoolean", 40},
  };
  for (const MemberRow& row : rows) EXPECT_EQ(row.enumeration->NumberOf(row.name), row.value) << row.name;
}

}  // namespace
}  // namespace talvex::test
