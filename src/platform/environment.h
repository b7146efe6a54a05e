// What objects created by name need from outside.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include "automation/class_registry.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/xml/tree.h"

namespace talvex::platform {

namespace database {
class SessionPool;
}
namespace spreadsheet {
class Engine;
}

// The one place through which the component reaches the world. The composition root fills one for each
// installation; a process has one, and a thread may work in another. None is changed once it is in use.
struct Environment {
  std::shared_ptr<automation::ClassRegistry> classes;
  std::shared_ptr<const Clock> clock;
  std::shared_ptr<Files> files;
  std::shared_ptr<const xml::Engine> xml;
  std::shared_ptr<const spreadsheet::Engine> spreadsheets;
  std::shared_ptr<database::SessionPool> sessions;
  // How many bytes of stack the calling thread has left.
  std::function<std::size_t()> stack_left;

  // The environment of the calling thread; error 91 when nobody has set one.
  [[nodiscard]] static const Environment& Current();
  // The same, for one who must know it again later.
  [[nodiscard]] static std::shared_ptr<const Environment> CurrentShared();

  static void SetForProcess(std::shared_ptr<const Environment> environment);

  // For as long as it lives, the calling thread works in another environment.
  class ForThread {
   public:
    explicit ForThread(std::shared_ptr<const Environment> environment);
    ~ForThread();
    ForThread(const ForThread&) = delete;
    ForThread& operator=(const ForThread&) = delete;

   private:
    std::shared_ptr<const Environment> before_;
  };
};

}  // namespace talvex::platform
