#include "tavlen/introspection/classes/RuntimeClasses.h"

#include <objc/runtime.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "tavlen/foundation/objc/ObjCImages.h"
#include "tavlen/foundation/tasks/ScopedProgress.h"
#include "tavlen/foundation/text/Unicode.h"

namespace tavlen {

namespace {

/// An array allocated by the run time; null when it is empty.
template <class Item>
using CopiedList = std::unique_ptr<Item, decltype(&std::free)>;

}  // namespace

void objc_enumerateClassesOfImage(const std::filesystem::path& imagePath,
                                  FunctionRef<void(objc_class* cls)> block) {
  const std::vector<Class> classes = ObjCRuntime::classesOfImage(imagePath);
  if (classes.empty()) return;
  const auto progress = Progress::make(static_cast<std::int64_t>(classes.size()));
  for (Class cls : classes) {
    const ScopedProgress current(progress, 1);
    if (cls != nullptr) block(cls);
  }
}

void class_enumerateMethods(objc_class* cls, bool instanceMethods,
                            FunctionRef<void(objc_method* method)> block) {
  unsigned count = 0;
  Class owner = instanceMethods ? cls : object_getClass(reinterpret_cast<id>(cls));
  const CopiedList<Method> methods(class_copyMethodList(owner, &count), &std::free);
  std::for_each(methods.get(), methods.get() + count, block);
}

std::optional<std::vector<std::string>> class_copyProtocolNames(objc_class* cls) {
  unsigned count = 0;
  const CopiedList<Protocol*> protocols(class_copyProtocolList(cls, &count), &std::free);
  if (count == 0) return std::nullopt;
  std::vector<std::string> names;
  names.reserve(count);
  std::for_each(protocols.get(), protocols.get() + count, [&](Protocol* protocol) {
    const char* name = protocol == nullptr ? nullptr : protocol_getName(protocol);
    if (name != nullptr) names.push_back(wellFormedUTF8(name));
  });
  return names;
}

}  // namespace tavlen
