#include "services/lib_general.h"

#include "automation/conversions.h"
#include "automation/text.h"
#include "automation/transaction_context.h"
#include "platform/environment.h"
#include "platform/per_environment.h"
#include "platform/suite.h"
#include "services/frame.h"

namespace talvex::Lib_General {

using automation::TransactionContext;
using automation::Variant;
using platform::database::Connection;
using platform::database::ObjectState;

namespace {

struct CachedConnectionString {
  std::string text;
};

}  // namespace

automation::ObjectRef gen_getComponent(std::string_view prog_id) {
  return Handled(
      "Lib_General.gen_getComponent",
      [&] {
        if (const auto* context = TransactionContext::Current()) return context->CreateInstance(prog_id);
        return platform::Environment::Current().classes->Create(prog_id);
      },
      [&] {
        return Lib_ErrorHandling::Information("Failed to create a component with PROGID '" +
                                              std::string(prog_id) + "'");
      });
}

std::string Gen_GetConnectionString() {
  const platform::suite::Configuration configuration(
      gen_getComponent(platform::suite::class_name::kConfiguration));
  configuration.SelectApplication("Vantor");
  return configuration.Value("CONNECTIONS", "VantorConnection_ConnectionString");
}

std::shared_ptr<Connection> getConnection() {
  return Handled("Quorrin.RequisitionUtilities.getConnection", [&] {
    // A change of the configured string reaches a thread only when the thread, or its environment, is new.
    std::string& connection_string = platform::OfThreadAndEnvironment<CachedConnectionString>().text;
    if (automation::Trimmed(connection_string).empty()) connection_string = Gen_GetConnectionString();
    auto connection = std::make_shared<Connection>();
    connection->IsolationLevel = platform::database::kIsolationReadCommitted;
    connection->Open(connection_string, "", "", platform::database::kOptionsUnspecified);
    connection->Execute("set TRANSACTION ISOLATION LEVEL READ COMMITTED", nullptr,
                        platform::database::kOptionsUnspecified);
    return connection;
  });
}

void Gen_CloseConnection(std::shared_ptr<Connection>& conn) {
  const auto close = [&] {
    if (conn == nullptr || conn->State() != ObjectState::Open) return;
    conn->Close();
    conn.reset();
  };
  if (automation::PendingError().number == 0) {
    Handled("Lib_General.Gen_CloseConnection", close);
    return;
  }
  try {
    close();
  } catch (const automation::Error&) {
    conn.reset();  // The pending error is the one that the caller must see.
  }
}

std::string Gen_NullToString(const Variant& value) {
  return value.IsNull() ? std::string() : automation::ToText(value);
}

double Gen_NullToDouble(const Variant& value) { return value.IsNull() ? 0 : automation::ToDouble(value); }

Variant Gen_EmptyToNull(const Variant& value) {
  const std::string text = Gen_NullToString(value);
  const std::string_view trimmed = automation::Trimmed(text);
  return trimmed.empty() ? Variant(automation::kNull) : Variant(trimmed);
}

Variant Gen_EmptyToNullDate(const Variant& value) {
  if (value.Type() == automation::Kind::Date) return value;
  const Variant text = Gen_EmptyToNull(value);
  return text.IsNull() ? text : Variant(automation::ToDate(text));
}

std::string Gen_QuoteSQL(const Variant& value) {
  return automation::Replaced(automation::Replaced(automation::ToText(value), "'", "''"), "%", "[%]");
}

}  // namespace talvex::Lib_General
