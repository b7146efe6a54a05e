#include "support/failing_driver.h"

#include <algorithm>
#include <span>
#include <utility>

namespace talvex::test {

using platform::database::Fault;
using platform::database::Result;
using platform::database::Session;
using platform::database::TableInfo;

namespace {

class FailingSession final : public Session {
 public:
  FailingSession(std::unique_ptr<Session> inner, std::shared_ptr<DatabaseScript> script)
      : inner_(std::move(inner)), script_(std::move(script)) {}

  Result Execute(std::string_view text, std::span<const automation::Variant> parameters,
                 std::size_t most_rows) override {
    script_->Pass(text);
    return inner_->Execute(text, parameters, most_rows);
  }

  void Begin() override {
    script_->Pass("BEGIN");
    inner_->Begin();
  }

  void BeginReading() override {
    script_->Pass("BEGIN");
    inner_->BeginReading();
  }

  void Commit() override {
    try {
      script_->Pass("COMMIT");
    } catch (const Fault&) {
      inner_->Rollback();
      throw;
    }
    inner_->Commit();
  }

  void Rollback() noexcept override { inner_->Rollback(); }
  [[nodiscard]] std::shared_ptr<const TableInfo> Table(std::string_view name) override {
    return inner_->Table(name);
  }
  [[nodiscard]] bool Usable() const noexcept override { return inner_->Usable(); }

 private:
  std::unique_ptr<Session> inner_;
  std::shared_ptr<DatabaseScript> script_;
};

}  // namespace

void DatabaseScript::FailAt(std::string part, std::size_t nth, Fault fault) {
  const std::lock_guard lock(mutex_);
  plans_.push_back({std::move(part), nth, std::move(fault)});
}

void DatabaseScript::Heal() {
  const std::lock_guard lock(mutex_);
  plans_.clear();
}

void DatabaseScript::Pass(std::string_view text) {
  const std::lock_guard lock(mutex_);
  texts_.emplace_back(text);
  for (Plan& plan : plans_) plan.left -= text.find(plan.part) == text.npos ? 0 : 1;
  const auto due =
      std::find_if(plans_.begin(), plans_.end(), [](const Plan& plan) { return plan.left == 0; });
  if (due == plans_.end()) return;
  const Fault fault = due->fault;
  plans_.erase(due);
  throw Fault(fault);
}

std::vector<std::string> DatabaseScript::Texts() const {
  const std::lock_guard lock(mutex_);
  return texts_;
}

std::size_t DatabaseScript::Count(std::string_view part) const {
  const std::lock_guard lock(mutex_);
  const auto contains = [part](const std::string& text) { return text.find(part) != text.npos; };
  return static_cast<std::size_t>(std::count_if(texts_.begin(), texts_.end(), contains));
}

void DatabaseScript::ForgetTexts() {
  const std::lock_guard lock(mutex_);
  texts_.clear();
}

FailingDriver::FailingDriver(std::shared_ptr<platform::database::Driver> inner)
    : inner_(std::move(inner)), script_(std::make_shared<DatabaseScript>()) {}

std::unique_ptr<Session> FailingDriver::Open(const platform::database::ConnectionString& connection_string) {
  script_->Pass("OPEN");
  return std::make_unique<FailingSession>(inner_->Open(connection_string), script_);
}

}  // namespace talvex::test
