// A class with every kind of member and of parameter, for the tests of descriptions and of calls.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "automation/class_info.h"

namespace talvex::automation_test {

using automation::Array;
using automation::Currency;
using automation::Date;
using automation::Object;
using automation::Variant;

TALVEX_ENUM(Shade, std::int32_t, Light = 1, Dark = 2, Gone = -7);
TALVEX_ENUM(Grade, std::int16_t, Low = 10, High = 20);

// An object of another class than the one wanted.
class Stranger final : public Object {
  TALVEX_CLASS(Stranger, "Sample.Stranger", "A class without members.");
};

class Sample final : public Object {
  TALVEX_CLASS(Sample, "Sample.Everything", "Every kind of member.");

 public:
  TALVEX_METHOD(void, Nothing, (), "Takes and gives nothing.");
  TALVEX_METHOD(std::string, ByValue,
                (std::string iText, double iDouble, std::int32_t iInt32, std::int16_t iInt16, bool iBoolean,
                 Currency iCurrency, Date iDate, Array iArray),
                "The arguments as texts, separated by bars; of the array its upper bound.");
  TALVEX_METHOD(std::string, ByConstReference,
                (const std::string& iText, const Currency& iCurrency, const Date& iDate, const Array& iArray,
                 const Variant& iVariant, const std::shared_ptr<Sample>& iSample, const Shade& iShade),
                "The arguments as texts, separated by bars.");
  TALVEX_METHOD(bool, ByReference,
                (std::string & ioText, double& ioDouble, std::int32_t& ioInt32, std::int16_t& ioInt16,
                 bool& ioBoolean, Currency& ioCurrency, Date& ioDate, Array& ioArray, Shade& ioShade,
                 std::shared_ptr<Sample>& ioSample),
                "Changes every argument.");
  TALVEX_METHOD(void, Variants, (Variant iByValue, const Variant& iByConst, Variant& ioByReference),
                "Hands the kinds of the first two to the third, and changes the first.");
  TALVEX_METHOD(
      std::string, Optionals,
      (std::optional<std::string> iText, const std::optional<double>& iDouble, std::optional<Shade> iShade,
       std::optional<Variant> iVariant, Variant* oCount),
      "The arguments as texts, each with a bar, '-' for one left out; oCount gets how many were there.");
  TALVEX_METHOD(Shade, Darker, (Shade iShade, Grade iGrade), "iShade plus iGrade as numbers.");
  TALVEX_METHOD(std::shared_ptr<Object>, AnyObject, (std::shared_ptr<Object> iObject), "The object given.");
  TALVEX_METHOD(std::shared_ptr<Sample>, OwnClass, (std::shared_ptr<Sample> iSample), "The object given.");
  TALVEX_METHOD(void, Fails, (std::int32_t & ioNumber, Variant& ioVariant),
                "Changes both, then raises error 1004.");
  TALVEX_NAMED_METHOD(std::int32_t, Delete_, "Delete", (std::int32_t iNumber), "Twice the number.");
  TALVEX_PROPERTY(std::string, Owner, "Plain storage.");
  TALVEX_PROPERTY(Shade, Tone, "Plain storage of an enumeration.");
  TALVEX_PROPERTY(std::shared_ptr<Sample>, Next, "Plain storage of an object.");
  TALVEX_READONLY(std::int32_t, CallCount, "Calls", "How often Nothing was called.");
  TALVEX_ACCESSORS(double, Limit, "Limit", "At most 100; more raises error 5.");

 private:
  std::int32_t calls_ = 0;
  double limit_ = 50;
};

}  // namespace talvex::automation_test
