#include "unit/automation/sample_class.h"

#include <utility>

namespace talvex::automation_test {

using automation::Error;
using automation::ToText;

namespace {

constexpr std::string_view kBar = "|";

}  // namespace

void Sample::Nothing() { ++calls_; }

std::string Sample::ByValue(std::string iText, double iDouble, std::int32_t iInt32, std::int16_t iInt16,
                            bool iBoolean, Currency iCurrency, Date iDate, Array iArray) {
  std::string all = std::move(iText);
  for (const Variant& value : {Variant(iDouble), Variant(iInt32), Variant(iInt16), Variant(iBoolean),
                               Variant(iCurrency), Variant(iDate)}) {
    all.append(kBar).append(ToText(value));
  }
  return all.append(kBar).append(std::to_string(iArray.Upper()));
}

std::string Sample::ByConstReference(const std::string& iText, const Currency& iCurrency, const Date& iDate,
                                     const Array& iArray, const Variant& iVariant,
                                     const std::shared_ptr<Sample>& iSample, const Shade& iShade) {
  std::string all = iText;
  all.append(kBar).append(iCurrency.ToText()).append(kBar).append(iDate.ToText());
  all.append(kBar).append(std::to_string(iArray.Upper())).append(kBar).append(KindName(iVariant.Type()));
  all.append(kBar).append(iSample == nullptr ? "none" : iSample->Owner);
  return all.append(kBar).append(std::to_string(static_cast<std::int32_t>(iShade)));
}

bool Sample::ByReference(std::string& ioText, double& ioDouble, std::int32_t& ioInt32, std::int16_t& ioInt16,
                         bool& ioBoolean, Currency& ioCurrency, Date& ioDate, Array& ioArray, Shade& ioShade,
                         std::shared_ptr<Sample>& ioSample) {
  ioText += "!";
  ioDouble *= 2;
  ioInt32 += 1;
  ioInt16 = static_cast<std::int16_t>(ioInt16 - 1);
  ioBoolean = !ioBoolean;
  ioCurrency = ioCurrency + Currency::FromUnits(1);
  ioDate = ioDate.DayOnly();
  ioArray = Array({ioArray.At(0), "more"});
  ioShade = ioShade == Shade::Light ? Shade::Dark : Shade::Light;
  ioSample = ioSample == nullptr ? std::make_shared<Sample>() : nullptr;
  return true;
}

void Sample::Variants(Variant iByValue, const Variant& iByConst, Variant& ioByReference) {
  ioByReference = std::string(KindName(iByValue.Type())) + " " + std::string(KindName(iByConst.Type()));
  iByValue = "changed";
}

std::string Sample::Optionals(std::optional<std::string> iText, const std::optional<double>& iDouble,
                              std::optional<Shade> iShade, std::optional<Variant> iVariant, Variant* oCount) {
  std::int32_t count = 0;
  std::string all;
  const auto add = [&](bool there, const Variant& value) {
    count += there ? 1 : 0;
    all.append(there ? ToText(value) : "-").append(kBar);
  };
  add(iText.has_value(), iText.value_or(""));
  add(iDouble.has_value(), iDouble.value_or(0));
  add(iShade.has_value(), static_cast<std::int32_t>(iShade.value_or(Shade::Gone)));
  add(iVariant.has_value(), iVariant ? Variant(KindName(iVariant->Type())) : Variant());
  if (oCount != nullptr) *oCount = count;
  return all;
}

Shade Sample::Darker(Shade iShade, Grade iGrade) {
  return static_cast<Shade>(static_cast<std::int32_t>(iShade) + static_cast<std::int32_t>(iGrade));
}

std::shared_ptr<Object> Sample::AnyObject(std::shared_ptr<Object> iObject) { return iObject; }

std::shared_ptr<Sample> Sample::OwnClass(std::shared_ptr<Sample> iSample) { return iSample; }

void Sample::Fails(std::int32_t& ioNumber, Variant& ioVariant) {
  ioNumber = -1;
  ioVariant = "changed";
  throw Error(1004, "Sample", "It failed");
}

std::int32_t Sample::Delete_(std::int32_t iNumber) { return iNumber * 2; }

std::int32_t Sample::CallCount() const { return calls_; }

double Sample::Limit() const { return limit_; }

void Sample::SetLimit(const double& value) {
  if (value > 100) throw Error(automation::error_number::kInvalidCall, "Sample", "At most 100");
  limit_ = value;
}

}  // namespace talvex::automation_test
