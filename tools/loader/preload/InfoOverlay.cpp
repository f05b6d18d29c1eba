#include "tools/loader/preload/InfoOverlay.h"

#include <objc/runtime.h>

#include "tavlen/tweaks/LoaderSettings.h"
#include "tools/loader/base/Messages.h"

namespace tavlen::loader {

namespace {

using ObjCRuntime::classNamed;
using ObjCRuntime::send;

struct Overlay {
  id bundle = nullptr;      ///< the main bundle, which lives as long as the process
  id dictionary = nullptr;  ///< what it answers; owned
  IMP original = nullptr;
};

Overlay& overlay() {
  static Overlay shared;
  return shared;
}

id infoDictionary(id self, SEL selector) {
  if (self == overlay().bundle || overlay().original == nullptr) return overlay().dictionary;
  return reinterpret_cast<id (*)(id, SEL)>(overlay().original)(self, selector);
}

}  // namespace

void overlayMainBundle(const std::filesystem::path& file) {
  Class bundles = classNamed("NSBundle");
  Method method = bundles != nullptr ? class_getInstanceMethod(
                                           bundles, ObjCRuntime::selectorNamed("infoDictionary"))
                                     : nullptr;
  if (method == nullptr) return;
  const ObjCRuntime::AutoreleasePool pool;
  id data =
      send(classNamed("NSData"), "dataWithContentsOfFile:", ObjCRuntime::makeString(file.string()));
  if (data == nullptr) return;
  id values = send(classNamed("NSPropertyListSerialization"),
                   "propertyListWithData:options:format:error:", data, 0UL,
                   static_cast<unsigned long*>(nullptr), static_cast<id*>(nullptr));
  if (send<unsigned long>(values, "count") == 0) return;
  id bundle = send(bundles, "mainBundle");
  id merged = send(classNamed("NSMutableDictionary"), "new");
  if (id own = send(bundle, "infoDictionary")) send<void>(merged, "addEntriesFromDictionary:", own);
  send<void>(merged, "addEntriesFromDictionary:", values);
  id removed = ObjCRuntime::makeString(loaderSettings::kRemovedKeys);
  if (id keys = send(values, "objectForKey:", removed))
    send<void>(merged, "removeObjectsForKeys:", keys);
  send<void>(merged, "removeObjectForKey:", removed);
  overlay() = {bundle, merged, method_getImplementation(method)};
  method_setImplementation(method, reinterpret_cast<IMP>(&infoDictionary));
}

}  // namespace tavlen::loader
