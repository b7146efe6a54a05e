// The transaction that a caller has opened around the component's work.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "automation/class_registry.h"

namespace talvex::automation {

// What a transaction is for. A reading one sees one state of the database, keeps no writer waiting, and
// refuses to write.
enum class TransactionKind { Writing, Reading };

// What everything that runs under one transaction of the calling thread shares: the votes, the objects that
// the host offers by name, and the resources (a database session) whose work is kept or undone as one.
//
// A context is the thread's current one from its construction to its destruction; there is one at most.
class TransactionContext {
 public:
  // Something whose work the transaction keeps or undoes.
  class Resource {
   public:
    Resource() = default;
    Resource(const Resource&) = delete;
    Resource& operator=(const Resource&) = delete;
    virtual ~Resource() = default;
    virtual void Commit() = 0;  // Raises when the work cannot be kept; it is undone then.
    virtual void Rollback() noexcept = 0;
  };

  // Raises 5 when the thread has a context already. `classes` must outlive the context.
  explicit TransactionContext(const ClassRegistry& classes, TransactionKind kind = TransactionKind::Writing);
  // Rolls back whatever neither Commit nor Rollback has ended.
  ~TransactionContext();
  TransactionContext(const TransactionContext&) = delete;
  TransactionContext& operator=(const TransactionContext&) = delete;

  // The context that the calling thread is in; null outside a host.
  [[nodiscard]] static TransactionContext* Current() noexcept;

  [[nodiscard]] TransactionKind Kind() const noexcept { return kind_; }

  // A new object that takes part in the transaction.
  [[nodiscard]] ObjectRef CreateInstance(std::string_view class_name) const {
    return classes_.Create(class_name);
  }

  // The votes. One vote for abort decides, whatever else was voted.
  void SetComplete() noexcept {}
  void SetAbort() noexcept { aborted_ = true; }
  [[nodiscard]] bool Aborted() const noexcept { return aborted_; }  // True after a rollback, too.

  // Somebody else's work stood in the way (a changed row, a deadlock, a busy database): running the whole
  // transaction again may succeed.
  void NoteConflict() noexcept { conflict_ = true; }
  [[nodiscard]] bool HadConflict() const noexcept { return conflict_; }

  // Objects that the host shares, such as "Application". Raises 5 for a name that the host does not offer, or
  // offers no object under.
  void Offer(std::string_view name, ObjectRef object);
  [[nodiscard]] ObjectRef NamedObject(std::string_view name) const;

  // Resources by key, committed or rolled back in the order of their enlisting. Find gives null when nothing
  // is enlisted under the key.
  void Enlist(std::string_view key, std::unique_ptr<Resource> resource);
  [[nodiscard]] Resource* Find(std::string_view key) const;

  // To be called once the outcome is known, with true when the work was kept. Must not raise.
  void OnCompletion(std::function<void(bool committed)> callback);

  // Ends the transaction, in the votes' sense for Commit: it keeps the work and returns true, or, after a
  // vote for abort, undoes it and returns false. Raises what a resource raises that cannot keep its work; its
  // work is undone then, and that of the resources behind it.
  bool Commit();
  void Rollback() noexcept;

 private:
  void Finish(bool committed) noexcept;

  const ClassRegistry& classes_;
  TransactionKind kind_;
  bool aborted_ = false;
  bool conflict_ = false;
  std::map<std::string, ObjectRef, std::less<>> named_;
  std::vector<std::pair<std::string, std::unique_ptr<Resource>>> resources_;
  std::vector<std::function<void(bool)>> callbacks_;
};

}  // namespace talvex::automation
