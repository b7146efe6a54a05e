#include "host/host.h"

#include <filesystem>
#include <system_error>

#include "adapters/libxml2/xml_engine.h"
#include "adapters/odbc/driver.h"
#include "adapters/posix/stack.h"
#include "adapters/posix/system_clock.h"
#include "adapters/posix/system_files.h"
#include "adapters/spreadsheet/sheet_engine.h"
#include "adapters/sqlite/driver.h"
#include "adapters/suite/installation.h"
#include "adapters/suite/services.h"
#include "automation/error.h"
#include "component/public_classes.h"
#include "host/message_manager.h"
#include "platform/database/session_pool.h"

namespace talvex::host {

namespace {

using adapters::suite::Installation;

std::shared_ptr<const platform::Clock> MakeClock(const Settings& settings) {
  if (settings.now) return std::make_shared<platform::FixedClock>(*settings.now);
  return std::make_shared<adapters::posix::SystemClock>();
}

// talvex-sheet lies beside the program that runs.
std::string SheetProgram() {
  std::error_code unknown;
  return (std::filesystem::read_symlink("/proc/self/exe", unknown).parent_path() / "talvex-sheet").string();
}

std::shared_ptr<const platform::Environment> Compose(const Settings& settings,
                                                     const std::shared_ptr<Installation>& installation) {
  auto environment = std::make_shared<platform::Environment>();
  environment->classes = std::make_shared<automation::ClassRegistry>();
  component::RegisterPublicClasses(*environment->classes);
  adapters::suite::RegisterServices(*environment->classes, installation);
  environment->clock = MakeClock(settings);
  environment->files = std::make_shared<adapters::posix::SystemFiles>();
  environment->xml = std::make_shared<adapters::libxml2::XmlEngine>();
  environment->spreadsheets = std::make_shared<adapters::spreadsheet::SheetEngine>(SheetProgram());
  environment->sessions = std::make_shared<platform::database::SessionPool>();
  environment->sessions->AddDriver("SQLite", std::make_shared<adapters::sqlite::SqliteDriver>(
                                                 [clock = environment->clock] { return clock->Now(); }));
  environment->sessions->AddDriver("", std::make_shared<adapters::odbc::OdbcDriver>(settings.now));
  environment->stack_left = &adapters::posix::StackLeft;
  return environment;
}

}  // namespace

Host::Host(const Settings& settings) {
  const auto installation = std::make_shared<Installation>(settings.directory);
  environment_ = Compose(settings, installation);
  if (!environment_->files->Exists(installation->Path("siteconfiguration.xml"))) {
    throw automation::Error(automation::error_number::kFileNotFound, "Talvex.Host",
                            settings.directory + " is no installation: it has no siteconfiguration.xml");
  }
  connection_string_ = [installation] { return installation->ConnectionText(); };
  transactions_ = std::make_unique<TransactionHost>(
      std::make_shared<Application>(std::make_shared<MessageManager>(connection_string_)));
}

std::shared_ptr<platform::database::Connection> Host::Connect() const {
  auto connection = std::make_shared<platform::database::Connection>();
  connection->Open(connection_string_(), std::nullopt, std::nullopt, std::nullopt);
  return connection;
}

}  // namespace talvex::host
