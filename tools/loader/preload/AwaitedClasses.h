#pragma once

#include <mutex>
#include <set>
#include <string>

namespace tavlen::loader {

/// The superclasses that classes of loaded modules wait for. An image registers its modules one by
/// one, and a class may come before its superclass; until then the run time ends the program that
/// asks for a method. Threads: any.
class AwaitedClasses {
 public:
  /// Notes the superclasses of a module's classes. To call before the run time has the module,
  /// which replaces their names.
  void add(const void* module);
  /// Whether all that were noted are registered.
  bool haveCome();

 private:
  std::mutex lock_;
  std::set<std::string> names_;
};

}  // namespace tavlen::loader
