// An installation whose workbooks are stood in for: what is written to one is kept as text, and what is read
// from one is a text that the test gives.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "exchange/budget.h"
#include "support/error_of.h"
#include "support/stand_ins.h"
#include "support/test_installation.h"

namespace talvex::test {

// What the stand-ins of one test share.
struct ExcelScript {
  std::vector<std::string> written;  // Workbook XML, one for each call.
  std::vector<std::string> calls;    // The other arguments, and the calls of the workbook.
  std::string write_error;           // Added to the error text of a call that is to fail.
  std::string save_error;            // Raised by a saving that is to fail.
  std::string workbook_xml;          // What is read; empty for a workbook that cannot be.
};

class StandInWorkbook final : public automation::Object {
  TALVEX_CLASS(StandInWorkbook, "Test.Workbook", "Keeps its calls.");

 public:
  explicit StandInWorkbook(std::shared_ptr<ExcelScript> script) : script_(std::move(script)) {}
  TALVEX_METHOD(void, Save, (), "Keeps the call.");
  TALVEX_METHOD(void, Close, (), "Keeps the call.");

 private:
  std::shared_ptr<ExcelScript> script_;
};

class StandInExcel final : public automation::Object {
  TALVEX_CLASS(StandInExcel, "Talvex.BudgetExcel", "Keeps what is written and gives what is to be read.");

 public:
  explicit StandInExcel(std::shared_ptr<ExcelScript> script) : script_(std::move(script)) {}
  TALVEX_METHOD(automation::Variant, TransformXMLToExcel,
                (const std::string& i_sXml, std::int32_t i_nWriteMode, std::int32_t i_lDocID,
                 bool i_bTemplateUsed, std::string& o_sError, const std::string& i_sUser,
                 const std::string& i_sFilePath, const std::string& i_sFilePathDest),
                "Keeps the XML.");
  TALVEX_METHOD(void, TransformExcelToXML,
                (const std::string& i_sExcelFileLocation, std::shared_ptr<platform::xml::XmlDocument>& o_oXml,
                 std::string& o_sError, const std::string& i_sUser),
                "Gives the XML.");

 private:
  std::shared_ptr<ExcelScript> script_;
};

class ExchangeWorld {
 public:
  explicit ExchangeWorld(const std::string& now)
      : site_(false, now),
        script_(std::make_shared<ExcelScript>()),
        environment_(WithOwnClasses(platform::Environment::Current())),
        for_thread_(environment_) {
    environment_->classes->Register(StandInExcel::Info(),
                                    [script = script_] { return std::make_shared<StandInExcel>(script); });
  }

  [[nodiscard]] const TestInstallation& Site() const noexcept { return site_; }
  [[nodiscard]] ExcelScript& Excel() noexcept { return *script_; }
  [[nodiscard]] platform::Environment& Environment() noexcept { return *environment_; }
  // Puts another text in place of a file of the installation.
  void Replace(const std::string& name, const std::string& content) const;
  // Every byte of a file of the installation; "" when there is none.
  [[nodiscard]] std::string File(const std::string& name) const;

 private:
  TestInstallation site_;
  std::shared_ptr<ExcelScript> script_;
  std::shared_ptr<platform::Environment> environment_;
  platform::Environment::ForThread for_thread_;
};

// Runs a test's body in such an installation on a thread of its own.
inline void WithExchange(const std::function<void(ExchangeWorld&)>& body,
                         const std::string& now = "2026-01-05T09:07:03") {
  OnOwnThread([&] {
    ExchangeWorld world(now);
    body(world);
  });
}

// A stylesheet that gives the document back as it is.
inline constexpr const char* kIdentity =
    "<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'>"
    "<xsl:output omit-xml-declaration='yes'/>"
    "<xsl:template match='@*|node()'><xsl:copy><xsl:apply-templates select='@*|node()'/></xsl:copy>"
    "</xsl:template></xsl:stylesheet>";

}  // namespace talvex::test
