#include "platform/spreadsheet/workbook.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <limits>
#include <utility>

#include "automation/conversions.h"
#include "automation/error.h"
#include "automation/text.h"
#include "platform/environment.h"
#include "platform/spreadsheet/open_book.h"

namespace talvex::platform::spreadsheet {

namespace {

using automation::Error;
using automation::Kind;
using automation::Variant;
namespace number = automation::error_number;

PropertyType TypeOf(const Variant& value) {
  switch (value.Type()) {
    case Kind::String:
      return PropertyType::Text;
    case Kind::Double:
      return PropertyType::Number;
    case Kind::Date:
      return PropertyType::Date;
    case Kind::Boolean:
      return PropertyType::Boolean;
    default:
      return PropertyType::None;
  }
}

// A property counts its seconds since 1970 in 32 bits.
bool HoldsDate(const automation::Date& date) {
  return date.Seconds() >= 0 && date.Seconds() <= std::numeric_limits<std::uint32_t>::max();
}

// The longest name or text that every file keeps whole, in bytes of UTF-8. A file whose texts all fit its
// code page holds more characters, which one property beyond it would take away again.
constexpr std::size_t kLongestProperty = 65534;

void RequireFit(const std::string& text, const std::string& what) {
  if (text.size() <= kLongestProperty) return;
  throw Error(number::kInvalidCall, kSource, what + " is longer than the 65,534 bytes that a file holds");
}

// Properties whose names begin so describe the document itself: they are not among the custom ones, and those
// that the file has no place for would be lost.
bool IsReserved(const std::string& name) {
  static constexpr const char* kFamilies[] = {"dc:", "gsf:", "meta:", "msole:", "xlsx:"};
  return std::any_of(std::begin(kFamilies), std::end(kFamilies),
                     [&](const char* family) { return name.starts_with(family); });
}

void RequireName(const std::string& name) {
  if (name.empty() || !automation::IsUtf8(name) || name.find('\0') != std::string::npos) {
    throw Error(number::kInvalidCall, kSource, "No name for a document property: \"" + name + "\"");
  }
  RequireFit(name, "The name of a document property");
  if (!IsReserved(name)) return;
  throw Error(number::kInvalidCall, kSource,
              "The document property " + name +
                  " cannot be set: names that begin with dc:, gsf:, meta:, msole: or xlsx: are taken");
}

// The value as one of the four types that a property has.
Variant ForProperty(const std::string& name, const Variant& value) {
  if (value.IsEmpty()) return std::string();
  if (value.IsString()) {
    const auto& text = value.As<std::string>();
    if (!automation::IsUtf8(text) || text.find('\0') != std::string::npos) {
      throw Error(number::kInvalidCall, kSource, "The document property " + name + " is no text");
    }
    RequireFit(text, "The text of the document property " + name);
    return value;
  }
  if (value.Type() == Kind::Date && !HoldsDate(value.As<automation::Date>())) {
    throw Error(number::kOverflow, kSource,
                "Overflow: the document property " + name + " holds a date from 1970 to 2106 only");
  }
  if (TypeOf(value) != PropertyType::None && value.Type() != Kind::Double) return value;
  const double real = automation::ToDouble(value);
  if (!std::isfinite(real)) {
    throw Error(number::kOverflow, kSource, "The document property " + name + " is no finite number");
  }
  return real;
}

auto FindProperty(auto& properties, const std::string& name) {
  return std::find_if(properties.begin(), properties.end(),
                      [&](const auto& property) { return automation::SameFolded(property.name, name); });
}

Files& FileSystem() { return *Environment::Current().files; }

}  // namespace

std::shared_ptr<Workbook> Workbook::Open(const std::string& path) {
  return std::make_shared<Workbook>(path, true);
}

std::shared_ptr<Workbook> Workbook::FromTemplate(const std::string& template_path) {
  return std::make_shared<Workbook>(template_path, false);
}

Workbook::Workbook(std::string base, bool own_file)
    : book_(std::make_shared<OpenBook>()),
      engine_(Environment::Current().spreadsheets),
      base_(std::move(base)),
      own_file_(own_file) {
  if (engine_ == nullptr) {
    throw Error(number::kCannotCreateObject, kSource, "Can't create object: there is no workbook engine");
  }
  // Looked at before the content, so that a change while it is being read does not go unnoticed.
  version_ = FileSystem().Version(base_);
  book_->content = engine_->Read(base_);
}

Workbook::~Workbook() = default;

std::string Workbook::Name() const {
  book_->RequireOpen();
  return base_.substr(base_.find_last_of("\\/") + 1);
}

std::string Workbook::Path() const {
  book_->RequireOpen();
  return own_file_ ? base_ : std::string();
}

bool Workbook::Changed() const {
  book_->RequireOpen();
  return !book_->edits.empty();
}

std::int32_t Workbook::SheetCount() const {
  book_->RequireOpen();
  return static_cast<std::int32_t>(book_->content.sheets.size());
}

std::shared_ptr<Worksheet> Workbook::Sheet(const Variant& index) {
  book_->RequireOpen();
  if (index.IsString()) {
    const auto& name = index.As<std::string>();
    if (const auto found = book_->FindSheet(name)) return std::make_shared<Worksheet>(book_, *found);
    throw Error(number::kSubscriptOutOfRange, kSource, "Subscript out of range: no sheet \"" + name + "\"");
  }
  const std::int32_t position = automation::ToInt32(index);
  if (position < 1 || position > SheetCount()) {
    throw Error(number::kSubscriptOutOfRange, kSource,
                "Subscript out of range: no sheet " + std::to_string(position));
  }
  return std::make_shared<Worksheet>(book_, static_cast<std::size_t>(position) - 1);
}

bool Workbook::HasSheet(const std::string& name) {
  book_->RequireOpen();
  return book_->FindSheet(name).has_value();
}

std::shared_ptr<Worksheet> Workbook::AddSheet(const std::string& name) {
  book_->RequireOpen();
  book_->RequireFreeSheetName(name, std::nullopt);
  book_->content.sheets.push_back({name, {}});
  book_->edits.emplace_back(edit::AddSheet{name});
  return std::make_shared<Worksheet>(book_, book_->content.sheets.size() - 1);
}

const std::vector<Property>& Workbook::Properties() const {
  book_->RequireOpen();
  return book_->content.properties;
}

std::int32_t Workbook::PropertyCount() const { return static_cast<std::int32_t>(Properties().size()); }

std::string Workbook::PropertyName(std::int32_t position) {
  if (position < 1 || position > PropertyCount()) {
    throw Error(number::kSubscriptOutOfRange, kSource,
                "Subscript out of range: no document property " + std::to_string(position));
  }
  return Properties()[static_cast<std::size_t>(position) - 1].name;
}

Variant Workbook::Property(const std::string& name) {
  const auto found = FindProperty(Properties(), name);
  return found == Properties().end() ? Variant() : found->value;
}

std::int32_t Workbook::PropertyTypeOf(const std::string& name) {
  return static_cast<std::int32_t>(TypeOf(Property(name)));
}

void Workbook::SetProperty(const std::string& name, const Variant& value) {
  book_->RequireOpen();
  RequireName(name);
  spreadsheet::Property property{name, ForProperty(name, value), false};
  book_->edits.emplace_back(edit::SetProperty{name, property.value});
  auto& properties = book_->content.properties;
  const auto found = FindProperty(properties, name);
  if (found == properties.end()) {
    properties.push_back(std::move(property));
  } else {
    property.name = found->name;
    *found = std::move(property);
  }
}

// The bytes of the file with the edits made; without any, those of the base as it is. The cells with formulas
// take their new values.
std::string Workbook::Rewritten() {
  if (FileSystem().Version(base_) != version_) {
    throw Error(number::kFileAccess, kSource,
                "Path/File access error: " + base_ + " has been changed since the workbook was read from it");
  }
  if (book_->edits.empty()) return FileSystem().Read(base_);
  auto rewritten = engine_->Rewrite(base_, book_->edits);
  for (const auto& sheet : rewritten.formulas) {
    const auto index = book_->FindSheet(sheet.name);
    if (!index) continue;
    for (const auto& [row, cells] : sheet.cells.ByRow()) {
      for (const auto& [column, cell] : cells) book_->content.sheets[*index].cells.Set({row, column}, cell);
    }
  }
  return std::move(rewritten.file);
}

void Workbook::Adopt(const std::string& path) {
  base_ = path;
  version_ = FileSystem().Version(path);
  own_file_ = true;
  book_->edits.clear();
}

void Workbook::Calculate() {
  book_->RequireOpen();
  if (!book_->edits.empty()) static_cast<void>(Rewritten());
}

void Workbook::Save() {
  book_->RequireOpen();
  if (!own_file_) {
    throw Error(number::kFileAccess, kSource, "Path/File access error: the new workbook has no file yet");
  }
  if (book_->edits.empty()) return;
  FileSystem().Replace(base_, Rewritten());
  Adopt(base_);
}

void Workbook::SaveAs(const std::string& path, std::optional<bool> replace) {
  book_->RequireOpen();
  if (own_file_ && SystemPath(path) == SystemPath(base_)) {
    Save();
  } else if (replace.value_or(false)) {
    FileSystem().Replace(path, Rewritten());
    Adopt(path);
  } else {
    // Found out before the work is done; WriteNew finds out again about a name taken meanwhile.
    if (FileSystem().Exists(path)) {
      throw Error(number::kFileAlreadyExists, kSource, "File already exists: " + path);
    }
    FileSystem().WriteNew(path, Rewritten());
    Adopt(path);
  }
}

void Workbook::Close() {
  book_->open = false;
  book_->content = {};
  book_->edits.clear();
}

std::shared_ptr<Workbook> Application::Open(const std::string& path) { return Workbook::Open(path); }

std::shared_ptr<Workbook> Application::FromTemplate(const std::string& path) {
  return Workbook::FromTemplate(path);
}

}  // namespace talvex::platform::spreadsheet
