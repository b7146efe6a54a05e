// What every command works with: the options that all commands share, the installation, and where the answer
// goes.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>

#include <nlohmann/json_fwd.hpp>

#include "apps/cli/style.h"
#include "automation/date.h"
#include "automation/object.h"
#include "host/host.h"

namespace talvex::apps {

// Keeps the fields in the order in which they were set, so that answers read the same every time.
using Json = nlohmann::ordered_json;

enum class ExitStatus : int {
  Done = 0,
  No = 1,      // The answer is no, or the data were rejected.
  Usage = 2,   // The arguments make no sense.
  Failed = 3,  // Something broke.
};

// The arguments make no sense; the text says which and why.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The answer is no, for a reason that is told on standard error: nothing of that name, for example.
class Refusal : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Something broke, and no part of the component says what.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct GlobalOptions {
  std::string directory;                // Of the installation; empty when none was given.
  std::optional<automation::Date> now;  // Fixes the clock.
  std::string user;                     // For whom texts are looked up; empty for English.
  bool json = false;
};

class Session {
 public:
  Session(GlobalOptions options, Style style, std::ostream& out)
      : options_(std::move(options)), style_(style), out_(&out) {}

  [[nodiscard]] const GlobalOptions& Options() const noexcept { return options_; }
  [[nodiscard]] const Style& Look() const noexcept { return style_; }
  [[nodiscard]] std::ostream& Out() const noexcept { return *out_; }
  // Writes an answer for machines. Bytes that are not UTF-8 come out as the replacement character.
  void Print(const Json& answer) const;

  // The installation, made the process's own when it is first asked for. Throws UsageError when none was
  // given and what host::Host raises for one that is none.
  [[nodiscard]] const host::Host& Host();
  // Runs the body in a transaction, and again a few times while the work of others stands in its way.
  host::Outcome InTransaction(const std::function<void()>& body);
  // Runs a body that only reads and whose answer is told afterwards.
  void ReadFirst(const std::function<void()>& body);
  // Runs a body that only reads, in a reading transaction: all that it tells is of one state of the database,
  // and nobody who posts meanwhile waits for it. What the body tells is written when the transaction has
  // ended, so that a reader who takes his time keeps no snapshot open. Gives the body's status.
  ExitStatus Reading(const std::function<ExitStatus()>& body);
  // What the installation's clock says.
  [[nodiscard]] automation::Date Now();
  // An object of a class of the component, made through the transaction that the thread is in, if any.
  [[nodiscard]] automation::ObjectRef Create(const std::string& class_name);

 private:
  GlobalOptions options_;
  Style style_;
  std::ostream* out_;
  std::unique_ptr<host::Host> host_;
};

}  // namespace talvex::apps
