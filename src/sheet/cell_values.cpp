#include "sheet/cell_values.h"

// clang-format off
#include <expr.h>
#include <expr-impl.h>
#include <gnm-format.h>
#include <mstyle.h>
#include <parse-util.h>
#include <sheet-style.h>
#include <sheet.h>
#include <value.h>
#include <workbook.h>
// clang-format on

#include <cmath>
#include <memory>
#include <utility>

#include "adapters/spreadsheet/message/messages.h"
#include "sheet/dates.h"
#include "sheet/formula_text.h"
#include "sheet/refusal.h"

namespace talvex::sheet {

namespace {

using message::Moment;
using message::Value;
namespace refusals = message::refusals;

constexpr const char* kDateFormat = "m/d/yyyy";
constexpr const char* kDateTimeFormat = "m/d/yyyy hh:mm:ss";
constexpr const char* kTimeFormat = "hh:mm:ss";

bool From1904(const Sheet* sheet) { return sheet_date_conv(sheet)->use_1904 != 0; }

// A lapse of time ("[h]:mm") is no time of day.
bool IsTimeOfDay(const GOFormat* format, const GnmValue* value) {
  return gnm_format_is_time_for_value(format, value) == 1;
}

Value ReadNumber(const GnmCell* cell, const GnmValue* value) {
  const auto number = static_cast<double>(value_get_as_float(value));
  if (!std::isfinite(number)) return std::string("#NUM!");  // A damaged file can hold any bits.
  const GOFormat* format = gnm_cell_get_format(cell);
  const bool is_date = gnm_format_is_date_for_value(format, value) > 0;
  if (!is_date && !IsTimeOfDay(format, value)) return number;
  const auto seconds = SecondsOfSerial(number, From1904(cell->base.sheet), !is_date);
  if (!seconds) return number;
  return Moment{*seconds};
}

Value ReadValue(const GnmCell* cell) {
  const GnmValue* value = cell->value;
  if (VALUE_IS_EMPTY(value)) return std::monostate{};
  if (VALUE_IS_BOOLEAN(value)) return value->v_bool.val != 0;
  if (VALUE_IS_FLOAT(value)) return ReadNumber(cell, value);
  if (VALUE_IS_STRING(value) || VALUE_IS_ERROR(value)) return ValidText(value_peek_string(value));
  return std::monostate{};
}

// The library writes function names in small letters and reads them in any; people write capitals.
void WriteFunction(GnmConventionsOut* out, const GnmExprFunction* function) {
  const gsize start = out->accum->len;
  gnm_conventions_default->output.func(out, function);
  for (char* at = out->accum->str + start; *at != '\0' && *at != '('; ++at) *at = g_ascii_toupper(*at);
}

const GnmConventions* Conventions() {
  static const GnmConventions* const made = [] {
    GnmConventions* conventions = gnm_conventions_new();
    conventions->input.range_ref = gnm_conventions_default->input.range_ref;
    conventions->decimal_sep_dot = TRUE;
    conventions->range_sep_colon = TRUE;
    conventions->arg_sep = ',';
    conventions->array_col_sep = ',';
    conventions->array_row_sep = ';';
    conventions->r1c1_addresses = FALSE;
    conventions->output.func = &WriteFunction;
    // As many as workbooks show; with more, 0.001 would come out as 0.0010000000000000000208.
    conventions->output.decimal_digits = 15;
    return conventions;
  }();
  return made;
}

std::string ReadFormula(const GnmCell* cell) {
  if (cell->base.texpr == nullptr) return {};
  GnmParsePos at;
  parse_pos_init_cell(&at, cell);
  GnmConventionsOut out{g_string_new("="), &at, Conventions()};
  gnm_expr_top_as_gstring(cell->base.texpr, &out);
  const std::string text = ValidText(out.accum->str);
  g_string_free(out.accum, TRUE);
  return FromLibrary(text);
}

[[noreturn]] void RefuseFormula(const GnmCell* cell, const std::string& formula, const std::string& why) {
  throw Refusal(refusals::kEdit, "No formula for the cell " + std::string(cell_name(cell)) + ": " + formula +
                                     " (" + why + ")");
}

std::string Translated(const GnmCell* cell, const std::string& formula) {
  try {
    return ForLibrary(std::string_view(formula).substr(1));
  } catch (const Refusal& refusal) {
    RefuseFormula(cell, formula, refusal.what());
  }
}

void SetFormula(GnmCell* cell, const std::string& formula) {
  const std::string translated = Translated(cell, formula);
  GnmParsePos at;
  parse_pos_init_cell(&at, cell);
  GnmParseError error;
  parse_error_init(&error);
  const GnmExprTop* parsed = gnm_expr_parse_str(
      translated.c_str(), &at, GNM_EXPR_PARSE_UNKNOWN_NAMES_ARE_INVALID, Conventions(), &error);
  const std::string why = error.err == nullptr ? "it cannot be read" : ValidText(error.err->message);
  parse_error_free(&error);
  if (parsed == nullptr) RefuseFormula(cell, formula, why);
  gnm_cell_set_expr(cell, parsed);
  gnm_expr_top_unref(parsed);
}

// A number that is a date needs a format that shows it as one.
void ShowAsDate(const GnmCell* cell, Moment moment) {
  const GOFormat* format = gnm_style_get_format(gnm_cell_get_style(cell));
  const bool only_time = IsOnlyTime(moment.seconds);
  if (go_format_is_date(format) > 0 || (only_time && go_format_is_time(format) > 0)) return;
  GnmStyle* style = gnm_style_new();
  const bool midnight = moment.seconds % 86400 == 0;
  gnm_style_set_format_text(style, only_time ? kTimeFormat : midnight ? kDateFormat : kDateTimeFormat);
  sheet_style_apply_pos(cell->base.sheet, cell->pos.col, cell->pos.row, style);
}

struct ToLibrary {
  const GnmCell* cell;

  GnmValue* operator()(std::monostate /*nothing*/) const { return value_new_empty(); }
  GnmValue* operator()(bool value) const { return value_new_bool(value ? TRUE : FALSE); }
  GnmValue* operator()(double value) const { return value_new_float(value); }
  GnmValue* operator()(const std::string& value) const { return value_new_string(value.c_str()); }
  GnmValue* operator()(Moment value) const {
    const auto serial = SerialOfSeconds(value.seconds, From1904(cell->base.sheet));
    if (!serial) {
      throw Refusal(refusals::kEdit, "No date for the cell " + std::string(cell_name(cell)) +
                                         ": it is before the first day of the workbook's calendar");
    }
    ShowAsDate(cell, value);
    return value_new_float(*serial);
  }
};

}  // namespace

std::string ValidText(const char* text) {
  if (text == nullptr) return {};
  if (g_utf8_validate(text, -1, nullptr)) return text;
  const std::unique_ptr<char, decltype(&g_free)> made(g_utf8_make_valid(text, -1), &g_free);
  return made.get();
}

std::optional<message::Cell> ReadCell(const GnmCell* cell) {
  message::Cell result{cell->pos.row + 1, cell->pos.col + 1, ReadValue(cell), ReadFormula(cell)};
  if (std::holds_alternative<std::monostate>(result.value) && result.formula.empty()) return std::nullopt;
  return result;
}

// Cells are set without the library's care for what is on a screen, which is thirty times as much work;
// whoever writes cells has all formulas calculated afterwards.
void WriteCell(Sheet* sheet, const message::Cell& cell) {
  if (std::holds_alternative<std::monostate>(cell.value) && cell.formula.empty()) {
    GnmCell* old = sheet_cell_get(sheet, cell.column - 1, cell.row - 1);
    if (old != nullptr) sheet_cell_remove(sheet, old, FALSE, TRUE);
    return;
  }
  GnmCell* target = sheet_cell_fetch(sheet, cell.column - 1, cell.row - 1);
  if (cell.formula.empty()) {
    gnm_cell_set_value(target, std::visit(ToLibrary{target}, cell.value));
  } else {
    SetFormula(target, cell.formula);
  }
}

}  // namespace talvex::sheet
