// Which classes can be created by name.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "automation/class_info.h"

namespace talvex::automation {

// Class names (compared without case) with the makers of their objects. Filled by the composition root before
// anybody creates anything; a test registers its own maker over another, to stand in for a service or to make
// creation fail.
class ClassRegistry {
 public:
  using Maker = std::function<ObjectRef()>;

  // Registers, or replaces, the class of that name.
  void Register(const ClassInfo& info, Maker maker) { Register(info.Name(), info, std::move(maker)); }
  void Register(std::string_view name, const ClassInfo& info, Maker maker);
  template <class T>
  void Register() {
    Register(T::Info(), [] { return std::make_shared<T>(); });
  }

  // A new object. Raises 429, naming the class, when it is not registered.
  [[nodiscard]] ObjectRef Create(std::string_view name) const;

  // Null when there is no such class.
  [[nodiscard]] const ClassInfo* Find(std::string_view name) const;
  // The registered names, in the order of the alphabet without regard to case.
  [[nodiscard]] std::vector<std::string> Names() const;
  // Those of them that implement an interface: that publish its members as "Interface_Member". Same order.
  [[nodiscard]] std::vector<std::string> Implementing(std::string_view interface_name) const;

 private:
  struct Entry {
    const ClassInfo* info;
    Maker maker;
  };
  std::unordered_map<std::string, Entry, FoldedHash, FoldedEqual> entries_;
};

}  // namespace talvex::automation
