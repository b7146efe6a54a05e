#include "unit/exchange/exchange_world.h"

#include <fstream>
#include <iterator>

namespace talvex::test {

void StandInWorkbook::Save() {
  script_->calls.emplace_back("Save");
  if (!script_->save_error.empty())
    throw automation::Error(automation::error_number::kFileAccess, "Test.Workbook", script_->save_error);
}
void StandInWorkbook::Close() { script_->calls.emplace_back("Close"); }

automation::Variant StandInExcel::TransformXMLToExcel(const std::string& i_sXml, std::int32_t i_nWriteMode,
                                                      std::int32_t i_lDocID, bool i_bTemplateUsed,
                                                      std::string& o_sError, const std::string& i_sUser,
                                                      const std::string& i_sFilePath,
                                                      const std::string& i_sFilePathDest) {
  script_->written.push_back(i_sXml);
  script_->calls.push_back(std::to_string(i_nWriteMode) + " " + std::to_string(i_lDocID) + " " +
                           (i_bTemplateUsed ? "template" : "workbook") + " " + i_sUser + " " + i_sFilePath +
                           " " + i_sFilePathDest);
  o_sError += script_->write_error;
  if (!script_->write_error.empty()) return {};
  return std::make_shared<StandInWorkbook>(script_);
}

void StandInExcel::TransformExcelToXML(const std::string& /*i_sExcelFileLocation*/,
                                       std::shared_ptr<platform::xml::XmlDocument>& o_oXml,
                                       std::string& o_sError, const std::string& /*i_sUser*/) {
  o_oXml = nullptr;
  if (script_->workbook_xml.empty()) {
    o_sError += "\r\nno workbook-";
    return;
  }
  o_oXml = std::make_shared<platform::xml::XmlDocument>();
  o_oXml->LoadXml(script_->workbook_xml);
}

void ExchangeWorld::Replace(const std::string& name, const std::string& content) const {
  std::ofstream(site_.Path(name), std::ios::binary | std::ios::trunc) << content;
}

std::string ExchangeWorld::File(const std::string& name) const {
  std::ifstream file(site_.Path(name), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace talvex::test
