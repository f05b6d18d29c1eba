#pragma once

#include <objc/objc.h>

#include <string>
#include <string_view>

#include "tavlen/foundation/objc/ObjCRuntime.h"

/// The messages that the loader itself sends, with selectors that are looked up once. None of them
/// calls a hook; see HookStack::OwnWork. Include in sources and in headers of this folder only: it
/// brings in the run time's names.
namespace tavlen::loader {

/// Sends a message with exactly these types, as ObjCRuntime::send() does, but by selector.
/// `receiver` is not null.
template <class Result = id, class... Arguments>
Result message(id receiver, SEL selector, Arguments... arguments) {
  using Method = Result (*)(id, SEL, Arguments...);
  return reinterpret_cast<Method>(ObjCRuntime::implementation(receiver, selector))(
      receiver, selector, arguments...);
}
/// The same to a class.
template <class Result = id, class... Arguments>
Result message(Class receiver, SEL selector, Arguments... arguments) {
  return message<Result>(reinterpret_cast<id>(receiver), selector, arguments...);
}

/// Retains `object` and returns it. Null, a class and an object whose class counts no references
/// stay as they are.
id retain(id object);
/// Undoes a retain(). May run the object's dealloc, and so the program's code.
void release(id object);
/// Undoes a retain() when the thread's innermost pool ends. Returns `object`.
id autorelease(id object);

/// Whether it is a class, which is an object, too.
bool isClass(id object);
/// Whether `cls` is `ancestor` or inherits from it. False if either is null.
bool isSubclass(Class cls, Class ancestor);
/// The class of an object as messages show it; of a class itself.
std::string className(id object);
/// The method as the command writes it: "-[Class selector]".
std::string methodText(Class cls, SEL selector, bool isClassMethod);

/// The text of an NSString in UTF-16, with all its units; empty for an object of another class.
std::u16string textOf(id string);
/// An owned NSString. Null where no Foundation is loaded.
id newString(std::u16string_view text);

}  // namespace tavlen::loader
