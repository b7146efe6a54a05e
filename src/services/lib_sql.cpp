#include "services/lib_sql.h"

#include "automation/conversions.h"
#include "services/frame.h"
#include "services/lib_general.h"

namespace talvex::Lib_SQL {

using automation::Dictionary;
using automation::Variant;
using platform::database::Affect;
using platform::database::CursorLocation;
using platform::database::CursorType;
using platform::database::EditMode;
using platform::database::kOptionsText;
using platform::database::kOptionsUnspecified;
using platform::database::ObjectState;

namespace {

std::shared_ptr<Recordset> OpenAtClient(const std::string& sql, const Variant& connection,
                                        CursorType cursor_type, LockType lock_type) {
  auto recordset = std::make_shared<Recordset>();
  recordset->CursorLocation = static_cast<std::int32_t>(CursorLocation::Client);
  recordset->Open(sql, connection, cursor_type, lock_type, kOptionsText);
  return recordset;
}

Lib_ErrorHandling::Information ExecutingInformation(const std::shared_ptr<Connection>& connection,
                                                    const std::string& sql) {
  const std::string errors =
      connection == nullptr ? std::string() : Lib_ErrorHandling::Err_ConnectionErrors(connection);
  return errors + " executing: '" + sql + "'";
}

// The caller's connection, or one that is opened for the call and closed when the call fails or asks for it.
class ConnectionForCall {
 public:
  explicit ConnectionForCall(const std::shared_ptr<Connection>& given)
      : connection_(given), own_(given == nullptr) {}

  const std::shared_ptr<Connection>& Get() {
    if (connection_ == nullptr) {
      const std::string connection_string = Lib_General::Gen_GetConnectionString();
      connection_ = std::make_shared<Connection>();
      connection_->Open(connection_string, "", "", kOptionsUnspecified);
    }
    return connection_;
  }
  [[nodiscard]] const std::shared_ptr<Connection>& Opened() const noexcept { return connection_; }
  void CloseOwn() {
    if (own_) Lib_General::Gen_CloseConnection(connection_);
  }

 private:
  std::shared_ptr<Connection> connection_;
  bool own_;
};

// A record set on the caller's connection, under the error convention of the module.
std::shared_ptr<Recordset> OpenConnected(std::string_view method, const std::string& sql,
                                         const std::shared_ptr<Connection>& connection, LockType lock_type) {
  return Handled(
      method, [&] { return OpenAtClient(sql, connection, CursorType::Keyset, lock_type); },
      [&] { return ExecutingInformation(connection, sql); });
}

void AbandonEdit(Recordset& recordset) {
  if (recordset.Eof() || recordset.Bof() || recordset.EditMode() == EditMode::None) return;
  if (recordset.LockType() == LockType::BatchOptimistic) {
    recordset.CancelBatch(Affect::All);
  } else {
    recordset.CancelUpdate();
  }
}

}  // namespace

std::shared_ptr<Recordset> Sql_ExecuteSQL(const std::string& sql) {
  return Handled(
      "Lib_SQL.Sql_ExecuteSQL",
      [&] {
        auto connection = Lib_General::getConnection();
        auto result = connection->Execute(sql, nullptr, kOptionsUnspecified);
        connection->Close();
        return result;
      },
      [&] { return Lib_ErrorHandling::Information("Executing: " + sql); });
}

std::shared_ptr<Recordset> Sql_GetDisconnectedRecordset(const std::string& sql,
                                                        const std::shared_ptr<Connection>& connection) {
  ConnectionForCall used(connection);
  std::shared_ptr<Recordset> first;
  return Handled(
      "Lib_SQL.Sql_GetDisconnectedRecordset",
      [&] {
        first = OpenAtClient(sql, used.Get(), CursorType::ForwardOnly, LockType::ReadOnly);
        first->SetActiveConnection(nullptr);
        auto result = first->Clone(LockType::Unspecified);
        CloseRecordset(first);
        used.CloseOwn();
        return result;
      },
      [&] {
        auto information = ExecutingInformation(used.Opened(), sql);
        CloseRecordset(first);
        used.CloseOwn();
        return information;
      });
}

std::shared_ptr<Recordset> Sql_GetReadonlyRecordset(const std::string& sql,
                                                    const std::shared_ptr<Connection>& connection) {
  return OpenConnected("Lib_SQL.Sql_GetReadonlyRecordset", sql, connection, LockType::ReadOnly);
}

std::shared_ptr<Recordset> SQL_GetWritableRecordset(const std::string& sql,
                                                    const std::shared_ptr<Connection>& connection,
                                                    LockType lock_type) {
  ConnectionForCall used(connection);
  return Handled(
      "Lib_SQL.SQL_GetWritableRecordset",
      [&] {
        auto recordset = OpenAtClient(sql, used.Get(), CursorType::Keyset, lock_type);
        recordset->SetActiveConnection(nullptr);
        return recordset;
      },
      [&] {
        auto information = ExecutingInformation(used.Opened(), sql);
        used.CloseOwn();
        return information;
      });
}

std::shared_ptr<Recordset> Sql_GetUpdateableRecordset(const std::string& sql,
                                                      const std::shared_ptr<Connection>& connection,
                                                      LockType lock_type) {
  return OpenConnected("Lib_SQL.Sql_GetUpdateableRecordset", sql, connection, lock_type);
}

std::shared_ptr<Dictionary> Sql_GetRecordsAsDictionary(const std::string& sql,
                                                       const std::string& connection_string) {
  std::shared_ptr<Recordset> recordset;
  return Handled(
      "Lib_SQL.Sql_GetRecordsAsDictionary. SQL: '" + sql + "'",
      [&] {
        auto dictionary = std::make_shared<Dictionary>();
        recordset = OpenAtClient(sql, connection_string, CursorType::ForwardOnly, LockType::ReadOnly);
        for (; !recordset->Eof(); recordset->MoveNext()) {
          dictionary->Add(automation::ToText(recordset->Value(0)), recordset->Value(1));
        }
        Sql_CloseRecordsetAndConnection(recordset);
        return dictionary;
      },
      [&] {
        Sql_CloseRecordsetAndConnection(recordset);
        return Lib_ErrorHandling::Information();
      });
}

std::shared_ptr<Dictionary> Sql_getRecords(std::shared_ptr<Connection>& connection, const std::string& sql,
                                           const std::string& key_column, const std::string& value_column) {
  std::shared_ptr<Recordset> recordset;
  return Handled(
      "Lib_Sql.Sql_getRecords SQL:" + sql,
      [&] {
        recordset = Sql_GetDisconnectedRecordset(sql, connection);
        auto dictionary = std::make_shared<Dictionary>();
        for (; !recordset->Eof(); recordset->MoveNext()) {
          dictionary->Add(automation::ToText(recordset->Value(key_column)), recordset->Value(value_column));
        }
        CloseRecordset(recordset);
        Lib_General::Gen_CloseConnection(connection);
        Lib_MTS::MTS_SetComplete();
        return dictionary;
      },
      [&] {
        CloseRecordset(recordset);
        Lib_General::Gen_CloseConnection(connection);
        Lib_MTS::MTS_SetAbort();
        return Lib_ErrorHandling::Information();
      });
}

void CloseRecordset(std::shared_ptr<Recordset>& recordset) {
  const auto close = [&] {
    if (recordset == nullptr || recordset->State() != ObjectState::Open) return;
    AbandonEdit(*recordset);
    recordset->Close();
  };
  if (automation::PendingError().number == 0) {
    Handled("Lib_SQL.CloseRecordset", close);
  } else {
    try {
      close();
    } catch (const automation::Error&) {  // NOLINT(bugprone-empty-catch)
      // The pending error is the one that the caller must see.
    }
  }
  recordset.reset();
}

void Sql_CloseRecordsetAndConnection(std::shared_ptr<Recordset>& recordset) {
  if (recordset == nullptr) return;
  const std::shared_ptr<Connection> connection = recordset->ActiveConnection();
  if (recordset->State() == ObjectState::Open) recordset->Close();
  if (connection != nullptr && connection->State() == ObjectState::Open) connection->Close();
  recordset->SetActiveConnection(nullptr);
  recordset.reset();
}

}  // namespace talvex::Lib_SQL
