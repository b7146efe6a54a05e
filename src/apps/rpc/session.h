// One client's work with the component.
#pragma once

#include <memory>
#include <string>

#include "apps/rpc/json.h"
#include "apps/rpc/objects.h"
#include "automation/transaction_context.h"
#include "host/transaction_host.h"

namespace talvex::apps::rpc {

// The methods of the gateway: create, release, invoke, get, set, describe, begin, end and rollback. A session
// keeps the objects that its client was given, and the client's transaction when one is open. All of it
// belongs to one thread, which works in the environment that the classes are found in. A session that ends
// rolls its transaction back.
class Session {
 public:
  // `transactions` must outlive the session.
  explicit Session(const host::TransactionHost& transactions) : transactions_(transactions) {}

  // Runs a method. Raises MethodNotFound (protocol.h) for any other name, InvalidParams (values.h) for
  // parameters that are missing, unknown or malformed, and what the component raises.
  Json Run(const std::string& method, const Json& params);

 private:
  class Params;

  [[nodiscard]] automation::ObjectRef ObjectOf(const Params& params) const;
  std::unique_ptr<automation::TransactionContext> TakeTransaction();

  Json Create(const Params& params);
  Json Release(const Params& params);
  Json Invoke(const Params& params);
  Json Get(const Params& params);
  Json Set(const Params& params);
  Json Describe(const Params& params);
  Json Begin(const Params& params);
  Json End(const Params& params);
  Json Rollback(const Params& params);

  const host::TransactionHost& transactions_;
  ObjectTable objects_;
  // Goes before the objects do: what they did in an open transaction is taken back while they are all there.
  std::unique_ptr<automation::TransactionContext> transaction_;
};

}  // namespace talvex::apps::rpc
