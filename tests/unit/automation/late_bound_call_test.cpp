#include <cmath>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "automation/class_info.h"
#include "support/error_of.h"
#include "unit/automation/sample_class.h"

namespace talvex::automation {
namespace {

using automation_test::Sample;
using automation_test::Shade;
using automation_test::Stranger;
using test::ErrorNumberOf;
using test::ErrorOf;

class LateBoundCall : public ::testing::Test {
 protected:
  // The arguments by position; a null pointer is one left out.
  Variant Invoke(std::string_view method, const std::vector<Variant*>& arguments) {
    return object_->Invoke(method, arguments);
  }

  std::shared_ptr<Sample> sample_ = std::make_shared<Sample>();
  ObjectRef object_ = sample_;
};

TEST_F(LateBoundCall, ConvertsArgumentsByValue) {
  EXPECT_EQ(object_->Call("byvalue", 7, "1.5", 2.5, "3", "true", 12, "3/15/2026", Array({1, 2})),
            Variant("7|1.5|2|3|True|12|3/15/2026|1"));
  EXPECT_EQ(object_->Call("ByValue", Variant(), Variant(), Variant(), Variant(), Variant(), Variant(),
                          Variant(), Array()),
            Variant("|0|0|0|False|0|00:00:00|-1"));
}

TEST_F(LateBoundCall, ConvertsArgumentsByConstReference) {
  sample_->Owner = "me";
  Variant amount("12.34");
  const Variant text(5);
  EXPECT_EQ(object_->Call("ByConstReference", text, amount, Date::Civil(2026, 3, 15), Array({1}), kNull,
                          sample_, "dark"),
            Variant("5|12.34|3/15/2026|0|Null|me|2"));
  EXPECT_EQ(amount, Variant("12.34"));  // Only read, so not even converted for the caller.
}

TEST_F(LateBoundCall, HandsByReferenceArgumentsBackInTheirParametersKind) {
  Variant text(7), a_double(2), int32("41"), int16(1.0), boolean("False"), currency(1),
      date("3/15/2026 14:30"), array(Array({"first"})), shade("light"), object;
  EXPECT_EQ(object_->Call("ByReference", text, a_double, int32, int16, boolean, currency, date, array, shade,
                          object),
            Variant(true));
  EXPECT_EQ(text, Variant("7!"));
  EXPECT_EQ(a_double, Variant(4.0));
  EXPECT_EQ(int32, Variant(42));
  EXPECT_EQ(int16, Variant(std::int16_t{0}));
  EXPECT_EQ(boolean, Variant(true));
  EXPECT_EQ(currency, Variant(Currency::FromUnits(10001)));
  EXPECT_EQ(date, Variant(Date::Civil(2026, 3, 15)));
  EXPECT_EQ(array, Variant(Array({"first", "more"})));
  EXPECT_EQ(shade, Variant(2));
  ASSERT_TRUE(object.IsObject());
  EXPECT_NE(std::dynamic_pointer_cast<Sample>(object.As<ObjectRef>()), nullptr);
}

TEST_F(LateBoundCall, HandsAnObjectThatIsNotSetBackAsEmpty) {
  Variant object(sample_);
  object_->Call("ByReference", "", 0, 0, 0, false, 0, Date(), Array({1}), 2, object);
  EXPECT_TRUE(object.IsEmpty());
}

TEST_F(LateBoundCall, CallerKeepsWhatItPassesByValue) {
  const Variant constant(41);
  Variant changed(41);
  Variant text(""), number(0), flag(false), date{Date()}, array(Array({1})), shade(1), object;
  object_->Call("ByReference", text, number, constant, number, flag, number, date, array, shade, object);
  EXPECT_EQ(constant, Variant(41));
  object_->Call("ByReference", text, number, std::move(changed), number, flag, number, date, array, shade,
                object);
  EXPECT_EQ(text, Variant("!!"));
}

TEST_F(LateBoundCall, VariantParametersKeepTheirKind) {
  Variant by_value(1.5);
  Variant by_reference("before");
  EXPECT_TRUE(object_->Call("Variants", by_value, kNull, by_reference).IsEmpty());
  EXPECT_EQ(by_value, Variant(1.5));
  EXPECT_EQ(by_reference, Variant("Double Null"));
}

TEST_F(LateBoundCall, OptionalArgumentsMayBeLeftOut) {
  Variant text("a"), number("1.5"), shade("Dark"), variant(kNull), count;
  struct Row {
    std::vector<Variant*> arguments;
    std::string result;
    Variant count;
  };
  const Row rows[] = {{{}, "-|-|-|-|", Variant()},
                      {{nullptr, nullptr, nullptr, nullptr, nullptr}, "-|-|-|-|", Variant()},
                      {{nullptr, nullptr, nullptr, nullptr, &count}, "-|-|-|-|", 0},
                      {{&text}, "a|-|-|-|", Variant()},
                      {{nullptr, &number}, "-|1.5|-|-|", Variant()},
                      {{&text, nullptr, &shade, nullptr, &count}, "a|-|2|-|", 2},
                      {{&text, &number, &shade, &variant, &count}, "a|1.5|2|Null|", 4}};
  for (const Row& row : rows) {
    count = Variant();
    EXPECT_EQ(Invoke("Optionals", row.arguments), Variant(row.result));
    EXPECT_EQ(count, row.count) << row.result;
  }
  // An Empty argument is there: it is converted as Empty is.
  EXPECT_EQ(object_->Call("Optionals", Variant(), Variant(), Variant(), Variant()), Variant("|0|0|Empty|"));
}

TEST_F(LateBoundCall, EnumerationsTakeANumberOrTheNameOfAMember) {
  struct Row {
    Variant shade, grade;
    std::int32_t sum;
  };
  const Row rows[] = {{1, 10, 11},
                      {"Light", "High", 21},
                      {"dARK", std::int16_t{20}, 22},
                      {"gone", "LOW", 3},
                      {"2", "10", 12},
                      {2.5, 10, 12},
                      {"99", -99, 0},
                      {99, 0, 99},  // Without a member, which an enumeration allows.
                      {Variant(), Variant(), 0},
                      {2147483637, "low", 2147483647}};
  for (const Row& row : rows)
    EXPECT_EQ(object_->Call("Darker", row.shade, row.grade), Variant(row.sum)) << row.sum;
}

TEST_F(LateBoundCall, ObjectsOfTheClassWantedOrNone) {
  const auto stranger = std::make_shared<Stranger>();
  EXPECT_EQ(object_->Call("OwnClass", sample_), Variant(sample_));
  EXPECT_EQ(object_->Call("OwnClass", object_), Variant(sample_));
  EXPECT_EQ(object_->Call("AnyObject", stranger), Variant(stranger));
  EXPECT_TRUE(object_->Call("OwnClass", Variant()).IsEmpty());
  EXPECT_TRUE(object_->Call("AnyObject", std::shared_ptr<Stranger>()).IsEmpty());
}

TEST_F(LateBoundCall, MembersHaveTheirPublishedNames) {
  EXPECT_EQ(object_->Call("DELETE", 21), Variant(42));
  EXPECT_TRUE(object_->Call("nothing").IsEmpty());
  object_->Call("Nothing");
  EXPECT_EQ(object_->Get("calls"), Variant(2));
}

TEST_F(LateBoundCall, PropertiesAreConvertedBothWays) {
  EXPECT_EQ(object_->Get("Owner"), Variant(""));
  EXPECT_EQ(object_->Get("Tone"), Variant(0));
  EXPECT_TRUE(object_->Get("Next").IsEmpty());
  EXPECT_EQ(object_->Get("Limit"), Variant(50.0));
  object_->Set("OWNER", 12.5);
  object_->Set("tone", "Dark");
  object_->Set("Next", sample_);
  object_->Set("limit", "99.5");
  EXPECT_EQ(sample_->Owner, "12.5");
  EXPECT_EQ(sample_->Tone, Shade::Dark);
  EXPECT_EQ(object_->Get("Tone"), Variant(2));
  EXPECT_EQ(object_->Get("Next"), Variant(sample_));
  EXPECT_EQ(sample_->Limit(), 99.5);
  object_->Set("Next", Variant());
  EXPECT_EQ(sample_->Next, nullptr);
}

TEST_F(LateBoundCall, ErrorsSayWhatIsWrongAndWhere) {
  Variant one(1), text("abc"), null(kNull), huge(1e10), stranger(std::make_shared<Stranger>()),
      array(Array({1}));
  struct Row {
    std::function<void()> call;
    std::int32_t number;
    std::string description;
  };
  const auto invoke = [this](const char* method, std::vector<Variant*> arguments) {
    return [this, method, arguments] { Invoke(method, arguments); };
  };
  const std::string no_member = "Object doesn't support this property or method: Sample.Everything.";
  const Row rows[] = {
      {invoke("Missing", {}), 438, no_member + "Missing"},
      {invoke("Owner", {}), 438, no_member + "Owner"},
      {[&] { static_cast<void>(object_->Get("Missing")); }, 438, no_member + "Missing"},
      {[&] { static_cast<void>(object_->Get("Nothing")); }, 438, no_member + "Nothing"},
      {[&] { object_->Set("Missing", one); }, 438, no_member + "Missing"},
      {[&] { object_->Set("Calls", one); }, 438, no_member + "Calls"},
      {invoke("delete", {}), 449, "Argument not optional (argument iNumber)"},
      {invoke("Delete", {nullptr}), 449, "Argument not optional (argument iNumber)"},
      {invoke("Variants", {&one, &one}), 449, "Argument not optional (argument ioByReference)"},
      {invoke("Variants", {nullptr, &one, &one}), 449, "Argument not optional (argument iByValue)"},
      {invoke("Fails", {&one, nullptr}), 449, "Argument not optional (argument ioVariant)"},
      {invoke("Nothing", {&one}), 450, "Wrong number of arguments: Sample.Everything.Nothing takes 0"},
      {invoke("delete", {&one, nullptr}), 450, "Wrong number of arguments: Sample.Everything.Delete takes 1"},
      {invoke("Delete", {&text}), 13, "Type mismatch: 'abc' is not a number (argument iNumber)"},
      {invoke("Delete", {&null}), 94, "Invalid use of Null (argument iNumber)"},
      {invoke("Delete", {&huge}), 6, "Overflow: the number does not fit a 32-bit integer (argument iNumber)"},
      {invoke("Fails", {&text, &one}), 13, "Type mismatch: 'abc' is not a number (argument ioNumber)"},
      {invoke("Optionals", {nullptr, &text}), 13, "Type mismatch: 'abc' is not a number (argument iDouble)"},
      {invoke("Optionals", {&null}), 94, "Invalid use of Null (argument iText)"},
      {invoke("Darker", {&text, &one}), 13, "Type mismatch: 'abc' is not a number (argument iShade)"},
      {invoke("Darker", {&one, &huge}), 6,
       "Overflow: the number does not fit a 16-bit integer (argument iGrade)"},
      {invoke("Darker", {&text, &text}), 13, "Type mismatch: 'abc' is not a number (argument iShade)"},
      {invoke("OwnClass", {&stranger}), 13,
       "Type mismatch: an object of class Sample.Everything is wanted (argument iSample)"},
      {invoke("OwnClass", {&one}), 13,
       "Type mismatch: an object of class Sample.Everything is wanted (argument iSample)"},
      {invoke("AnyObject", {&array}), 13,
       "Type mismatch: an object of class object is wanted (argument iObject)"},
      {[&] { object_->Call("ByValue", "", 0, 0, 0, false, 0, Date(), one); }, 13,
       "Type mismatch: an array is wanted (argument iArray)"},
      {[&] { object_->Set("Tone", text); }, 13, "Type mismatch: 'abc' is not a number"},
      {[&] { object_->Set("Limit", 100.5); }, 5, "At most 100"},
      {[&] { object_->Call("Fails", 1, one); }, 1004, "It failed"},
  };
  for (const Row& row : rows) {
    const ErrorState error = ErrorOf(row.call);
    EXPECT_EQ(error.number, row.number) << row.description;
    EXPECT_EQ(error.description, row.description);
  }
}

TEST_F(LateBoundCall, ErrorOfAnArgumentKeepsItsSource) {
  const ErrorState error = ErrorOf([&] { object_->Call("Delete", "x"); });
  EXPECT_EQ(error.source, "Talvex.Automation");
  EXPECT_EQ(ErrorOf([&] { object_->Call("Fails", 1, 2); }).source, "Sample");
}

TEST_F(LateBoundCall, MethodThatRaisesHandsBackWhatItHadPutIntoItsArguments) {
  Variant number(7), variant(7);
  EXPECT_EQ(ErrorNumberOf([&] { object_->Call("Fails", number, variant); }), 1004);
  EXPECT_EQ(number, Variant(-1));
  EXPECT_EQ(variant, Variant("changed"));
}

TEST_F(LateBoundCall, BadArgumentLeavesTheMethodUncalledAndTheOthersUntouched) {
  Variant text(7), number(2), bad("abc");
  EXPECT_EQ(ErrorNumberOf([&] { Invoke("ByReference", {&text, &number, &bad}); }), 13);
  EXPECT_EQ(text, Variant(7));
  EXPECT_EQ(number, Variant(2));
}

}  // namespace
}  // namespace talvex::automation
