// Transactions around the component's work.
#pragma once

#include <functional>
#include <memory>

#include "automation/transaction_context.h"

namespace talvex::host {

enum class Outcome { Committed, Aborted };

// Opens transactions on the calling thread. Everything that runs in one shares one database transaction.
class TransactionHost {
 public:
  // `application` is offered to the component as the shared object "Application".
  explicit TransactionHost(automation::ObjectRef application);

  // A transaction that the caller ends itself, for one whose work does not come as a function.
  [[nodiscard]] std::unique_ptr<automation::TransactionContext> Begin(
      automation::TransactionKind kind = automation::TransactionKind::Writing) const;

  // Runs the body in a transaction. It is kept when the body returns and nobody voted abort; a vote for abort
  // undoes it and gives Aborted; an error out of the body, or one in keeping the work, undoes it and is
  // raised again.
  Outcome Run(const std::function<void()>& body) const;

  // Run, repeated while somebody else's work stood in the way (a changed row, a deadlock, a busy database),
  // at most `attempts` times; anything else ends it as it ends Run.
  Outcome RunWithRetry(const std::function<void()>& body, int attempts) const;

  // Runs a body that only reads, in a transaction that sees one state of the database from its first read to
  // its end, and that nobody who writes waits for (docs/servers.md says what each database gives). A
  // statement that is no query raises -2147217900. Votes have no meaning, since there is nothing to keep or
  // undo; an error out of the body is raised again. Where readers can be in others' way, and be ended for it,
  // the body is run again, at most `attempts` times in all.
  void RunReading(const std::function<void()>& body, int attempts = 1) const;

 private:
  Outcome Repeat(automation::TransactionKind kind, const std::function<void()>& body, int attempts) const;

  automation::ObjectRef application_;
};

}  // namespace talvex::host
