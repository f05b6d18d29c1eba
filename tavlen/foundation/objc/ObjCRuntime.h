#pragma once

#include <objc/objc.h>

#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/base/FunctionRef.h"

/// Objective-C from C++: classes by name, messages, texts. Works alike with the device's run time
/// and GCC's.
///
/// Missing classes and nil objects answer with nothing, so a chain of calls needs no checks between
/// its links. A message may raise an Objective-C exception: send messages inside runGuarded(),
/// within the scope of an AutoreleasePool. References are borrowed, never owned. Threads: any; each
/// thread has its own pools.
///
/// Include in sources only: this header brings in the run time's names, which are global.
namespace tavlen::ObjCRuntime {

/// The class named `name`; null when no loaded image defines it.
TAVLEN_API Class classNamed(const char* name);

/// Whether `object` is an instance of `cls` or of a subclass. Asks the run time, not the object, so
/// it works for objects that do not implement isKindOfClass:. False when either is null.
TAVLEN_API bool isKindOf(id object, Class cls);
/// The same for the class named `className`.
TAVLEN_API bool isKindOf(id object, const char* className);

/// Whether the object's class implements `selector`. Forwarded messages do not count.
TAVLEN_API bool respondsTo(id object, const char* selector);

/// A method's code, of unspecified type.
using Implementation = void (*)();
/// The code that a message `selector` to `receiver`, which is not null, runs.
TAVLEN_API Implementation implementation(id receiver, SEL selector);
/// The selector named `name`, registered if it is new.
TAVLEN_API SEL selectorNamed(const char* name);

/// Whether a result of this type is returned in registers. Larger results need another message
/// function on some devices; nothing here uses them.
template <class Result>
constexpr bool isReturnedInRegisters() {
  if constexpr (std::is_void_v<Result> || std::is_pointer_v<Result>)
    return true;
  else
    return sizeof(Result) <= 2 * sizeof(void*);
}

/// Sends a message. The types of the result and of every argument must be exactly the method's:
/// `unsigned long` for an NSUInteger (a plain 0 is not one), BOOL for a truth value. The result is
/// zero when the receiver is nil.
template <class Result = id, class... Arguments>
Result send(id receiver, const char* selector, Arguments... arguments) {
  static_assert(isReturnedInRegisters<Result>());
  if (receiver == nullptr) return Result();
  const SEL name = selectorNamed(selector);
  using Method = Result (*)(id, SEL, Arguments...);
  return reinterpret_cast<Method>(implementation(receiver, name))(receiver, name, arguments...);
}
/// The same for a class method.
template <class Result = id, class... Arguments>
Result send(Class receiver, const char* selector, Arguments... arguments) {
  return send<Result>(reinterpret_cast<id>(receiver), selector, arguments...);
}

/// Runs `body`. Returns false when an Objective-C exception ended it. The exception is dropped,
/// because it cannot be inspected from here. C++ exceptions propagate.
TAVLEN_API bool runGuarded(FunctionRef<void()> body);

/// The text of an NSString as UTF-8, with its NULs. Returns nothing for any other object, and for a
/// text that has no UTF-8 form.
TAVLEN_API std::optional<std::string> text(id string);

/// An autoreleased NSString; nil when `text` is not well-formed UTF-8.
TAVLEN_API id makeString(std::string_view text);

/// RAII: an autorelease pool for the calling thread. A no-op when there is no NSAutoreleasePool.
class TAVLEN_API AutoreleasePool {
 public:
  /// Begins the pool.
  AutoreleasePool();
  AutoreleasePool(const AutoreleasePool&) = delete;
  AutoreleasePool& operator=(const AutoreleasePool&) = delete;
  ~AutoreleasePool();

 private:
  id pool_;
};

}  // namespace tavlen::ObjCRuntime
