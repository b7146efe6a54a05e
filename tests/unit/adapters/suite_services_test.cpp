#include "adapters/suite/services.h"

#include <string>

#include <gtest/gtest.h>

#include "platform/suite.h"
#include "unit/adapters/suite_world.h"

namespace talvex::adapters::suite {
namespace {

namespace class_name = platform::suite::class_name;

std::string ParametersOf(const automation::ClassInfo& info, std::string_view method) {
  const automation::Method* found = info.FindMethod(method);
  if (found == nullptr) return "no such method";
  std::string text = found->result + "(";
  for (const auto& parameter : found->parameters)
    text += parameter.type + (parameter.by_reference ? "&" : "") + " ";
  return text + ")";
}

class SuiteServices : public testing::Test {
 protected:
  SuiteServices() { RegisterServices(classes_, std::make_shared<Installation>(suite_test::kDirectory)); }
  automation::ClassRegistry classes_;
};

// The environment is empty here: what cannot be reached cannot be needed.
TEST_F(SuiteServices, AreCreatedByNameWithoutReadingAnything) {
  for (const auto name :
       {class_name::kConfiguration, class_name::kLog, class_name::kCurrency, class_name::kSuiteUser,
        class_name::kMembershipUser, class_name::kReferentialChecker}) {
    const auto object = classes_.Create(name);
    ASSERT_NE(object, nullptr) << name;
    EXPECT_EQ(object->Class().Name(), name);
    EXPECT_NE(object, classes_.Create(name));
  }
  EXPECT_EQ(classes_.Names().size(), 6U);
}

TEST_F(SuiteServices, OfferTheirMembersInTheAgreedForm) {
  const auto& configuration = *classes_.Find(class_name::kConfiguration);
  EXPECT_EQ(ParametersOf(configuration, "SelectApplication"), "(string int32 )");
  EXPECT_EQ(ParametersOf(configuration, "Value"), "string(string string )");
  EXPECT_EQ(ParametersOf(configuration, "ApplicationEntries"), "Platform.Dictionary(string )");
  EXPECT_EQ(ParametersOf(configuration, "Load"), "(string )");
  EXPECT_NE(configuration.FindProperty("ConfigDir"), nullptr);
  EXPECT_EQ(ParametersOf(*classes_.Find(class_name::kLog), "WriteError"),
            "(string string variant& variant )");
  const auto& currency = *classes_.Find(class_name::kCurrency);
  EXPECT_EQ(ParametersOf(currency, "Convert"), "currency(string string currency date )");
  EXPECT_EQ(ParametersOf(currency, "Decimals"), "int32(string )");
  EXPECT_EQ(ParametersOf(currency, "CurrencyCodes"), "Platform.Dictionary()");
  const auto& user = *classes_.Find(class_name::kSuiteUser);
  EXPECT_EQ(ParametersOf(user, "SendMail"), "(string string string string )");
  EXPECT_EQ(ParametersOf(user, "Offices"), "Platform.Collection()");
  EXPECT_EQ(ParametersOf(user, "Exists"), "boolean(string )");
  const auto& membership = *classes_.Find(class_name::kMembershipUser);
  EXPECT_EQ(ParametersOf(membership, "Initialise"), "(string )");
  EXPECT_EQ(ParametersOf(membership, "Open"), "(string string string )");
  ASSERT_NE(membership.FindProperty("LocaleId"), nullptr);
  EXPECT_EQ(membership.FindProperty("LocaleId")->type, "int16");
}

}  // namespace
}  // namespace talvex::adapters::suite
