// What tests of XML documents work in: the real engine, and files on disk.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "adapters/libxml2/xml_engine.h"
#include "adapters/posix/system_files.h"
#include "platform/environment.h"
#include "platform/xml/xml_document.h"
#include "support/temporary_folder.h"

namespace talvex::test {

// A document that must be one.
inline platform::xml::XmlDocumentRef LoadedDocument(const std::string& text) {
  auto document = std::make_shared<platform::xml::XmlDocument>();
  EXPECT_TRUE(document->LoadXml(text)) << document->Error().reason;
  return document;
}

class XmlTest : public ::testing::Test {
 protected:
  using XmlDocument = platform::xml::XmlDocument;
  using XmlNodeRef = platform::xml::XmlNodeRef;

  XmlTest() : environment_(MadeEnvironment()), for_thread_(environment_) {}

  static platform::xml::XmlDocumentRef Loaded(const std::string& text) { return LoadedDocument(text); }

  // Why a text is refused. It must be, and the document must be empty then.
  static std::string Refusal(const std::string& text) {
    XmlDocument document;
    EXPECT_FALSE(document.LoadXml(text)) << text.substr(0, 80);
    EXPECT_NE(document.Error().code, 0);
    EXPECT_EQ(document.DocumentElement(), nullptr);
    EXPECT_EQ(document.Xml(), "");
    return document.Error().reason;
  }

  static std::vector<std::string> Names(const std::vector<XmlNodeRef>& nodes) {
    std::vector<std::string> names;
    for (const auto& node : nodes) names.push_back(node->Name());
    return names;
  }

  static std::vector<std::string> Texts(const std::vector<XmlNodeRef>& nodes) {
    std::vector<std::string> texts;
    for (const auto& node : nodes) texts.push_back(node->Text());
    return texts;
  }

  TemporaryFolder folder_;

 private:
  static std::shared_ptr<platform::Environment> MadeEnvironment() {
    auto environment = std::make_shared<platform::Environment>();
    environment->xml = std::make_shared<adapters::libxml2::XmlEngine>();
    environment->files = std::make_shared<adapters::posix::SystemFiles>();
    return environment;
  }

  std::shared_ptr<platform::Environment> environment_;
  platform::Environment::ForThread for_thread_;
};

}  // namespace talvex::test
