#include "adapters/suite/configuration.h"

#include <string>

#include <gtest/gtest.h>

#include "adapters/libxml2/xml_engine.h"
#include "platform/suite.h"
#include "unit/adapters/suite_world.h"

namespace talvex::adapters::suite {
namespace {

using suite_test::ErrorOf;
namespace number = automation::error_number;

constexpr const char* kSite = "/inst/siteconfiguration.xml";
constexpr std::string_view kSettings = R"(<?xml version="1.0"?>
<siteconfiguration>
  <application name="Vantor" configdir=".">
    <section name="CONNECTIONS">
      <!-- What the database is opened with. -->
      <entry key="VantorConnection_ConnectionString">Driver=SQLite;Database={ConfigDir}/a&amp;b.db</entry>
    </section>
    <section name="MEMBERSHIP"><entry key="MemScriptUser">  script  </entry><entry key="LDAPRoot"/></section>
  </application>
  <application name="Other" configdir="sub\folder\"><section name="S">
    <entry key="K">other</entry></section></application>
  <application name="Far" configdir="/far/away/"/>
</siteconfiguration>)";

class SuiteConfiguration : public testing::Test {
 protected:
  SuiteConfiguration() { files_->content[kSite] = kSettings; }

  // The service as the component calls it.
  [[nodiscard]] platform::suite::Configuration Service() const {
    return platform::suite::Configuration(std::make_shared<Configuration>(installation_));
  }
  // What reading the settings says when the file holds this text.
  [[nodiscard]] automation::ErrorState ErrorWith(const std::string& text) {
    files_->Change(kSite, text);
    return ErrorOf([&] { static_cast<void>(Service().ConfigDir()); });
  }

  std::shared_ptr<suite_test::MemoryFiles> files_ = std::make_shared<suite_test::MemoryFiles>();
  std::shared_ptr<Installation> installation_ = std::make_shared<Installation>(suite_test::kDirectory);

 private:
  [[nodiscard]] std::shared_ptr<platform::Environment> World() const {
    auto world = std::make_shared<platform::Environment>();
    world->files = files_;
    world->xml = std::make_shared<libxml2::XmlEngine>();
    return world;
  }
  platform::Environment::ForThread in_world_{World()};
};

TEST_F(SuiteConfiguration, GivesValuesBySectionAndKeyWithoutCase) {
  const auto service = Service();
  service.SelectApplication("vantor");
  EXPECT_EQ(service.Value("connections", "VANTORCONNECTION_connectionstring"),
            "Driver=SQLite;Database=/inst/a&b.db");
  EXPECT_EQ(installation_->ConnectionText(), "Driver=SQLite;Database=/inst/a&b.db");
}

TEST_F(SuiteConfiguration, KeepsBlanksInAValue) {
  EXPECT_EQ(Service().Value("MEMBERSHIP", "MemScriptUser"), "  script  ");
}

TEST_F(SuiteConfiguration, AValueThatIsNotConfiguredIsEmpty) {
  const auto service = Service();
  EXPECT_EQ(service.Value("MEMBERSHIP", "LDAPRoot"), "");
  EXPECT_EQ(service.Value("MEMBERSHIP", "Unknown"), "");
  EXPECT_EQ(service.Value("UNKNOWN", "LDAPRoot"), "");
}

TEST_F(SuiteConfiguration, AnApplicationThatIsNotConfiguredIsAnErrorAndTheOneBeforeStays) {
  const auto service = Service();
  service.SelectApplication("Other");
  const auto error = ErrorOf([&] { service.SelectApplication("Nobody"); });
  EXPECT_EQ(error.number, number::kInvalidCall);
  EXPECT_EQ(error.description,
            "The site configuration /inst/siteconfiguration.xml cannot be used: "
            "it has no application 'Nobody'");
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(service.ApplicationEntries("Nobody")); }).number,
            number::kInvalidCall);
  EXPECT_EQ(service.Value("S", "K"), "other");
}

TEST_F(SuiteConfiguration, AnObjectSelectsForItselfAlone) {
  const auto first = Service();
  const auto second = Service();
  first.SelectApplication("Other");
  EXPECT_EQ(first.Value("s", "k"), "other");
  EXPECT_EQ(second.Value("s", "k"), "");
}

TEST_F(SuiteConfiguration, DirectoriesAreRelativeToTheInstallation) {
  const auto service = Service();
  EXPECT_EQ(service.ConfigDir(), "/inst");
  service.SelectApplication("Other");
  EXPECT_EQ(service.ConfigDir(), "/inst/sub/folder");
  service.SelectApplication("Far");
  EXPECT_EQ(service.ConfigDir(), "/far/away");
}

TEST_F(SuiteConfiguration, EntriesTellTheirDirectory) {
  const auto entries = Service().ApplicationEntries("VANTOR");
  ASSERT_EQ(entries->Count(), 1);
  EXPECT_EQ(platform::suite::Configuration::ConfigDirOf(entries->Entries()[0].second), "/inst");
}

TEST_F(SuiteConfiguration, LoadsAnotherFileForItselfAlone) {
  files_->content["/else/where/site.xml"] =
      "<siteconfiguration><application name='Vantor' configdir='d'><section name='S'><entry "
      "key='K'>{ConfigDir}|loaded</entry></section></application></siteconfiguration>";
  const auto service = Service();
  service.Load("\\else\\where\\site.xml");
  EXPECT_EQ(service.Value("S", "K"), "/else/where|loaded");
  EXPECT_EQ(service.ConfigDir(), "/else/where/d");
  EXPECT_EQ(Service().Value("S", "K"), "");
}

TEST_F(SuiteConfiguration, AFileThatCannotBeLoadedLeavesTheOneBefore) {
  const auto service = Service();
  const auto error = ErrorOf([&] { service.Load("/nowhere\\site.xml"); });
  EXPECT_EQ(error.number, number::kFileNotFound);
  EXPECT_NE(error.description.find("/nowhere/site.xml"), std::string::npos) << error.description;
  EXPECT_EQ(service.Value("MEMBERSHIP", "MemScriptUser"), "  script  ");
}

TEST_F(SuiteConfiguration, ReadsTheFileAgainOnlyWhenItHasChanged) {
  const auto service = Service();
  EXPECT_EQ(service.Value("MEMBERSHIP", "MemScriptUser"), "  script  ");
  EXPECT_EQ(Service().ConfigDir(), "/inst");
  service.Load("/inst\\siteconfiguration.xml");
  EXPECT_EQ(files_->calls["Read"], 1);
  files_->Change(kSite, automation::Replaced(kSettings, "  script  ", "changed"));
  EXPECT_EQ(Service().Value("MEMBERSHIP", "MemScriptUser"), "changed");
  EXPECT_EQ(files_->calls["Read"], 2);
}

TEST_F(SuiteConfiguration, AMissingFileIsNoSuchFile) {
  static_cast<void>(Service().ConfigDir());
  files_->content.clear();
  const auto error = ErrorOf([&] { static_cast<void>(Service().ConfigDir()); });
  EXPECT_EQ(error.number, number::kFileNotFound);
  EXPECT_NE(error.description.find(kSite), std::string::npos) << error.description;
}

// Passwords with characters that mean something to XML are what breaks such a file most often.
TEST_F(SuiteConfiguration, ABrokenFileIsNamedWithTheLineAndNotQuoted) {
  const std::string beginning =
      "<siteconfiguration>\n<application name='Vantor'><section name='CONNECTIONS'>\n";
  const std::string end = "</entry></section></application></siteconfiguration>";
  for (const std::string entry :
       {"<entry key='K'>PWD=a&s3cret;", "<entry key='K'>PWD=<s3cret", "<entry key='K'>PWD=a<s3cret>",
        "<entry key='s3cret'", "<entry key='K' s3cret>", "<entry key='K'>PWD=s3cret\x01",
        "<s3cret:entry key='K'>", "<entry key='K'>&#xs3cret;"}) {
    const auto error = ErrorWith(beginning + entry + end);
    EXPECT_EQ(error.number, number::kInvalidCall) << entry;
    EXPECT_EQ(
        error.description,
        "The site configuration /inst/siteconfiguration.xml cannot be used: it is no valid XML document, "
        "look at line 3")
        << entry;
  }
}

TEST_F(SuiteConfiguration, AFileOfAnotherKindIsRefused) {
  EXPECT_NE(ErrorWith("<configuration/>").description.find("its first element is <configuration>"),
            std::string::npos);
}

TEST_F(SuiteConfiguration, WhatIsSaidTwiceIsRefused) {
  EXPECT_NE(ErrorWith("<siteconfiguration><application name='A'/><application name='a'/></siteconfiguration>")
                .description.find("it has the application 'a' twice"),
            std::string::npos);
  EXPECT_NE(
      ErrorWith(
          "<siteconfiguration><application name='Vantor'><section name='S'><entry key='K'>1</entry></section>"
          "<section name='s'><entry key='k'>2</entry></section></application></siteconfiguration>")
          .description.find("its section 's' has the key 'k' twice"),
      std::string::npos);
}

TEST_F(SuiteConfiguration, AnInstallationIsKnownByItsAbsoluteDirectory) {
  EXPECT_EQ(Installation("/a/b//").Directory(), "/a/b");
  EXPECT_EQ(Installation("/a\\b").Path("log"), "/a/b/log");
  EXPECT_EQ(Installation("here").Directory(), (std::filesystem::current_path() / "here").string());
}

}  // namespace
}  // namespace talvex::adapters::suite
