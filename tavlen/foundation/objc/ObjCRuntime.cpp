#include "tavlen/foundation/objc/ObjCRuntime.h"

#include <objc/message.h>
#include <objc/runtime.h>

#include <exception>

#include "tavlen/foundation/text/Unicode.h"

namespace tavlen::ObjCRuntime {

namespace {

constexpr unsigned long kUTF8StringEncoding = 4;

}  // namespace

// Not objc_getClass(), which may call a handler for unknown classes under GCC's run time.
Class classNamed(const char* name) { return reinterpret_cast<Class>(objc_lookUpClass(name)); }

bool isKindOf(id object, Class cls) {
  if (cls == nullptr) return false;
  for (Class each = object_getClass(object); each != nullptr; each = class_getSuperclass(each)) {
    if (each == cls) return true;
  }
  return false;
}

bool isKindOf(id object, const char* className) { return isKindOf(object, classNamed(className)); }

bool respondsTo(id object, const char* selector) {
  return object != nullptr &&
         class_respondsToSelector(object_getClass(object), selectorNamed(selector)) != NO;
}

SEL selectorNamed(const char* name) { return sel_registerName(name); }

Implementation implementation(id receiver, SEL selector) {
#if defined(__GNU_LIBOBJC__)
  return reinterpret_cast<Implementation>(objc_msg_lookup(receiver, selector));
#else
  static_cast<void>(receiver);
  static_cast<void>(selector);
  return reinterpret_cast<Implementation>(objc_msgSend);
#endif
}

bool runGuarded(FunctionRef<void()> body) {
  try {
    body();
    return true;
  } catch (const std::exception&) {
    throw;
  } catch (...) {
    return false;
  }
}

std::optional<std::string> text(id string) {
  if (!isKindOf(string, "NSString")) return std::nullopt;
  // Not UTF8String, which ends at a NUL and would turn one identifier into another.
  id data = send(string, "dataUsingEncoding:", kUTF8StringEncoding);
  if (data == nullptr) return std::nullopt;
  const auto length = send<unsigned long>(data, "length");
  if (length == 0) return std::string();
  std::string text(static_cast<const char*>(send<const void*>(data, "bytes")), length);
  if (!isValidUTF8(text)) return std::nullopt;
  return text;
}

id makeString(std::string_view text) {
  if (!isValidUTF8(text)) return nullptr;
  id string = send(send(classNamed("NSString"), "alloc"),
                   "initWithBytes:length:encoding:", static_cast<const void*>(text.data()),
                   static_cast<unsigned long>(text.size()), kUTF8StringEncoding);
  return send(string, "autorelease");
}

AutoreleasePool::AutoreleasePool()
    : pool_(send(send(classNamed("NSAutoreleasePool"), "alloc"), "init")) {}

AutoreleasePool::~AutoreleasePool() {
  // Objects run their own code when they are released.
  runGuarded([this] { send<void>(pool_, "drain"); });
}

}  // namespace tavlen::ObjCRuntime
