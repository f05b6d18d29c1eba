#include "tools/loader/preload/AwaitedClasses.h"

#include <algorithm>

#include "tavlen/foundation/objc/ObjCRuntime.h"

namespace tavlen::loader {

namespace {

// What GCC makes of a source. Its run time has no public declarations of it.

struct ClassLayout {
  void* metaclass;
  const char* superclass;  ///< null for a root class
};

struct SymbolsLayout {
  unsigned long selectorCount;
  void* selectors;
  unsigned short classCount;
  unsigned short categoryCount;
  const ClassLayout* classes[1];  // NOLINT(modernize-avoid-c-arrays): of `classCount`
};

struct ModuleLayout {
  unsigned long version;
  unsigned long size;
  const char* name;
  const SymbolsLayout* symbols;
};

}  // namespace

void AwaitedClasses::add(const void* module) {
  const SymbolsLayout* symbols = static_cast<const ModuleLayout*>(module)->symbols;
  if (symbols == nullptr) return;
  const std::lock_guard lock(lock_);
  std::for_each(symbols->classes, symbols->classes + symbols->classCount,
                [&](const ClassLayout* cls) {
                  if (cls->superclass != nullptr) names_.insert(cls->superclass);
                });
}

bool AwaitedClasses::haveCome() {
  const std::lock_guard lock(lock_);
  std::erase_if(names_, [](const std::string& name) {
    return ObjCRuntime::classNamed(name.c_str()) != nullptr;
  });
  return names_.empty();
}

}  // namespace tavlen::loader
