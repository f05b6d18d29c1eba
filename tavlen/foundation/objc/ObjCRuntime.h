#pragma once

#include <objc/objc.h>

#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

#include "tavlen/foundation/base/FunctionRef.h"

/// Objective-C from C++: classes by name, messages, texts. The device's run time and GCC's answer
/// alike.
///
/// Classes that are missing and objects that are nil answer nothing, so that a chain of calls needs
/// no check between its links. A message may raise an Objective-C exception: whoever sends one does
/// so inside runGuarded(), below an AutoreleasePool. References are borrowed, never owned.
/// Threads: any; each thread has its own pools.
///
/// For sources only: this header brings the run time's names, which are global.
namespace tavlen::ObjCRuntime {

/// The class of that name; null when no image that is loaded defines it.
Class classNamed(const char* name);

/// Whether `object` is of class `cls` or of one below it. Asks the run time, so an object that is a
/// stranger to this question answers it too. False when either is null.
bool isKindOf(id object, Class cls);
bool isKindOf(id object, const char* className);

/// Whether the object's class implements `selector`. Forwarded messages do not count.
bool respondsTo(id object, const char* selector);

/// The code behind a message to `receiver`, which is not null.
using Implementation = void (*)();
Implementation implementation(id receiver, SEL selector);
SEL selectorNamed(const char* name);

/// Larger results come back another way on some devices; nothing here needs one.
template <class Result>
constexpr bool isReturnedInRegisters() {
  if constexpr (std::is_void_v<Result> || std::is_pointer_v<Result>)
    return true;
  else
    return sizeof(Result) <= 2 * sizeof(void*);
}

/// Sends a message. The types of the result and of each argument must be exactly the method's:
/// `unsigned long` for an NSUInteger (a plain 0 is not one), BOOL for a truth value. The answer of
/// nil is zero, whatever the type.
template <class Result = id, class... Arguments>
Result send(id receiver, const char* selector, Arguments... arguments) {
  static_assert(isReturnedInRegisters<Result>());
  if (receiver == nullptr) return Result();
  const SEL name = selectorNamed(selector);
  using Method = Result (*)(id, SEL, Arguments...);
  return reinterpret_cast<Method>(implementation(receiver, name))(receiver, name, arguments...);
}
template <class Result = id, class... Arguments>
Result send(Class receiver, const char* selector, Arguments... arguments) {
  return send<Result>(reinterpret_cast<id>(receiver), selector, arguments...);
}

/// Runs `body`. False when an Objective-C exception ended it: that one is dropped, since it cannot
/// be looked at from here. C++ exceptions pass.
bool runGuarded(FunctionRef<void()> body);

/// The text of an NSString, NULs in it included; nothing for any other object, and for a text that
/// has no UTF-8 form.
std::optional<std::string> text(id string);

/// An autoreleased NSString; nil when `text` is malformed.
id makeString(std::string_view text);

/// Takes the objects that are autoreleased on this thread while it stands, and releases them at its
/// end. Does nothing where there is no NSAutoreleasePool.
class AutoreleasePool {
 public:
  AutoreleasePool();
  AutoreleasePool(const AutoreleasePool&) = delete;
  AutoreleasePool& operator=(const AutoreleasePool&) = delete;
  ~AutoreleasePool();

 private:
  id pool_;
};

}  // namespace tavlen::ObjCRuntime
