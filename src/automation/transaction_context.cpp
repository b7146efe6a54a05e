#include "automation/transaction_context.h"

#include <utility>

namespace talvex::automation {

namespace {

thread_local TransactionContext* current_context = nullptr;

}  // namespace

TransactionContext::TransactionContext(const ClassRegistry& classes, TransactionKind kind)
    : classes_(classes), kind_(kind) {
  if (current_context != nullptr) {
    throw Error(error_number::kInvalidCall, kAutomationSource,
                "Invalid procedure call: the thread is in a transaction already");
  }
  current_context = this;
}

TransactionContext::~TransactionContext() {
  Rollback();
  current_context = nullptr;
}

TransactionContext* TransactionContext::Current() noexcept { return current_context; }

void TransactionContext::Offer(std::string_view name, ObjectRef object) {
  named_.insert_or_assign(std::string(name), std::move(object));
}

ObjectRef TransactionContext::NamedObject(std::string_view name) const {
  const auto found = named_.find(name);
  if (found == named_.end() || found->second == nullptr) {
    throw Error(error_number::kInvalidCall, kAutomationSource,
                "Invalid procedure call: the host offers no object '" + std::string(name) + "'");
  }
  return found->second;
}

void TransactionContext::Enlist(std::string_view key, std::unique_ptr<Resource> resource) {
  resources_.emplace_back(key, std::move(resource));
}

TransactionContext::Resource* TransactionContext::Find(std::string_view key) const {
  for (const auto& [name, resource] : resources_) {
    if (name == key) return resource.get();
  }
  return nullptr;
}

void TransactionContext::OnCompletion(std::function<void(bool)> callback) {
  callbacks_.push_back(std::move(callback));
}

bool TransactionContext::Commit() {
  if (aborted_) {
    Rollback();
    return false;
  }
  try {
    for (const auto& [key, resource] : resources_) resource->Commit();
  } catch (...) {
    Rollback();
    throw;
  }
  Finish(true);
  return true;
}

void TransactionContext::Rollback() noexcept {
  aborted_ = true;
  for (const auto& [key, resource] : resources_) resource->Rollback();
  Finish(false);
}

void TransactionContext::Finish(bool committed) noexcept {
  // A callback may register another one, which moves them all. NOLINTNEXTLINE(modernize-loop-convert)
  for (std::size_t i = 0; i < callbacks_.size(); ++i) {
    const auto callback = std::move(callbacks_[i]);
    callback(committed);
  }
  callbacks_.clear();
  resources_.clear();
}

}  // namespace talvex::automation
