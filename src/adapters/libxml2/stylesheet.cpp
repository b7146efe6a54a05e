#include "adapters/libxml2/stylesheet.h"

#include <libxslt/imports.h>
#include <libxslt/security.h>
#include <libxslt/transform.h>
#include <libxslt/xslt.h>
#include <libxslt/xsltInternals.h>
#include <libxslt/xsltutils.h>

#include "adapters/libxml2/complaints.h"

namespace talvex::adapters::libxml2 {

namespace {

using StylesheetRef = std::unique_ptr<xsltStylesheet, FreeWith<xsltFreeStylesheet>>;
using TransformationRef = std::unique_ptr<xsltTransformContext, FreeWith<xsltFreeTransformContext>>;
using PreferencesRef = std::unique_ptr<xsltSecurityPrefs, FreeWith<xsltFreeSecurityPrefs>>;

constexpr std::string_view kStylesheetFails = "The stylesheet cannot be used";

// A copy that the library may change and free: it strips blanks from documents while it works.
DocumentRef Copy(const xmlDoc& document) {
  return DocumentRef(Made(xmlCopyDoc(const_cast<xmlDoc*>(&document), 1)));
}

PreferencesRef MadeForbiddingAll() {
  PreferencesRef preferences(Made(xsltNewSecurityPrefs()));
  for (const xsltSecurityOption option :
       {XSLT_SECPREF_READ_FILE, XSLT_SECPREF_WRITE_FILE, XSLT_SECPREF_CREATE_DIRECTORY,
        XSLT_SECPREF_READ_NETWORK, XSLT_SECPREF_WRITE_NETWORK}) {
    xsltSetSecurityPrefs(preferences.get(), option, &xsltSecurityForbid);
  }
  return preferences;
}

StylesheetRef Compiled(const xmlDoc& source, const Complaints& complaints) {
  DocumentRef copy = Copy(source);
  StylesheetRef stylesheet(xsltParseStylesheetDoc(copy.get()));
  if (stylesheet == nullptr) complaints.Raise(kStylesheetFails, "it is no stylesheet");
  static_cast<void>(copy.release());  // It is the stylesheet's now.
  // What the library only warns of, such as an unknown instruction, it passes over later.
  const bool wrong = stylesheet->errors != 0 || stylesheet->warnings != 0 || complaints.First().code != 0;
  if (wrong) complaints.Raise(kStylesheetFails, "it is wrong");
  // The result is a text like any other here, whatever encoding the stylesheet asks for.
  xmlFree(stylesheet->encoding);
  stylesheet->encoding = Made(xmlStrdup(reinterpret_cast<const xmlChar*>("UTF-8")));
  return stylesheet;
}

}  // namespace

void PrepareStylesheets() {
  xsltInit();
  // Preferences of the process, for the includes and imports of stylesheets; they live as long as it.
  static const PreferencesRef preferences = MadeForbiddingAll();
  xsltSetDefaultSecurityPrefs(preferences.get());
}

std::string Transformed(const xmlDoc& document, const xmlDoc& stylesheet) {
  const Complaints complaints;
  const StylesheetRef compiled = Compiled(stylesheet, complaints);
  const PreferencesRef preferences = MadeForbiddingAll();
  // The library changes a document only to take blanks out of it, as a stylesheet may ask. A copy of a large
  // one is the largest thing of all here, so it is made for that alone.
  DocumentRef copy;
  auto* source = const_cast<xmlDoc*>(&document);
  TransformationRef transformation(Made(xsltNewTransformContext(compiled.get(), source)));
  if (xsltNeedElemSpaceHandling(transformation.get()) != 0) {
    copy = Copy(document);
    source = copy.get();
    transformation.reset(Made(xsltNewTransformContext(compiled.get(), source)));
  }
  xsltSetTransformErrorFunc(transformation.get(), nullptr, &Complaints::AddText);
  if (xsltSetCtxtSecurityPrefs(preferences.get(), transformation.get()) != 0) throw std::bad_alloc();

  const DocumentRef result(
      xsltApplyStylesheetUser(compiled.get(), source, nullptr, nullptr, nullptr, transformation.get()));
  const bool failed = transformation->state != XSLT_STATE_OK || complaints.First().code != 0;
  if (result == nullptr || failed) complaints.Raise(kStylesheetFails, "it failed");

  xmlChar* text = nullptr;
  int length = 0;
  if (xsltSaveResultToString(&text, &length, result.get(), compiled.get()) < 0)
    complaints.Raise(kStylesheetFails, "its result cannot be written");
  const TextRef owned(text);
  return text == nullptr ? std::string()
                         : std::string(reinterpret_cast<const char*>(text), static_cast<std::size_t>(length));
}

}  // namespace talvex::adapters::libxml2
