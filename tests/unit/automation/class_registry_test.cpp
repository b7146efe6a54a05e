#include "automation/class_registry.h"

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "automation/collection.h"
#include "automation/dictionary.h"
#include "support/error_of.h"

namespace talvex::automation {
namespace {

using test::ErrorOf;

TEST(ClassRegistry, CreatesANewObjectEachTimeByNameWithoutCase) {
  ClassRegistry classes;
  classes.Register<Dictionary>();
  const ObjectRef first = classes.Create("Platform.Dictionary");
  const ObjectRef second = classes.Create("PLATFORM.dictionary");
  ASSERT_NE(std::dynamic_pointer_cast<Dictionary>(first), nullptr);
  ASSERT_NE(std::dynamic_pointer_cast<Dictionary>(second), nullptr);
  EXPECT_NE(first, second);
}

TEST(ClassRegistry, ErrorNamesTheClassThatIsNotThere) {
  ClassRegistry classes;
  classes.Register<Dictionary>();
  for (const char* name : {"Corvane.Log", "Platform.Dictionar", ""}) {
    const ErrorState error = ErrorOf([&] { static_cast<void>(classes.Create(name)); });
    EXPECT_EQ(error.number, 429);
    EXPECT_EQ(error.description,
              "Component can't create object: there is no class '" + std::string(name) + "'");
    EXPECT_EQ(classes.Find(name), nullptr);
  }
}

TEST(ClassRegistry, LaterRegistrationReplacesTheEarlierOne) {
  ClassRegistry classes;
  classes.Register<Dictionary>();
  classes.Register("platform.DICTIONARY", Collection::Info(), [] { return std::make_shared<Collection>(); });
  EXPECT_NE(std::dynamic_pointer_cast<Collection>(classes.Create("Platform.Dictionary")), nullptr);
  EXPECT_EQ(classes.Find("Platform.Dictionary"), &Collection::Info());
  EXPECT_EQ(classes.Names().size(), 1U);
}

TEST(ClassRegistry, MakerMayFail) {
  ClassRegistry classes;
  classes.Register(Dictionary::Info(),
                   []() -> ObjectRef { throw Error(70, "Somebody", "Permission denied"); });
  const ErrorState error = ErrorOf([&] { static_cast<void>(classes.Create("Platform.Dictionary")); });
  EXPECT_EQ(error.number, 70);
  EXPECT_EQ(error.source, "Somebody");
  EXPECT_EQ(error.description, "Permission denied");
}

TEST(ClassRegistry, OneClassMayHaveSeveralNames) {
  ClassRegistry classes;
  classes.Register<Collection>();
  classes.Register("Other.Name", Collection::Info(), [] { return std::make_shared<Collection>(); });
  EXPECT_EQ(classes.Create("other.name")->Class().Name(), "Platform.Collection");
  EXPECT_EQ(classes.Find("OTHER.NAME"), &Collection::Info());
}

TEST(ClassRegistry, NamesAreInTheOrderOfTheAlphabet) {
  ClassRegistry classes;
  EXPECT_TRUE(classes.Names().empty());
  for (const char* name : {"beta.B", "Gamma.C", "Alpha.a", "alpha.B", "Beta.A"}) {
    classes.Register(name, Dictionary::Info(), [] { return std::make_shared<Dictionary>(); });
  }
  EXPECT_EQ(classes.Names(), (std::vector<std::string>{"Alpha.a", "alpha.B", "Beta.A", "beta.B", "Gamma.C"}));
}

}  // namespace
}  // namespace talvex::automation
