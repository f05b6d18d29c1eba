#pragma once

#include <objc/objc.h>

#include <stdexcept>
#include <string>

#include <JavaScriptCore/JavaScript.h>

#include "tools/loader/base/ExceptionGuard.h"

namespace tavlen::loader {

class Engine;

/// A mistake of a script: it becomes an error that the script can catch.
class ScriptError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The private data of the engine's objects that the loader makes. The engine owns it and deletes
/// it in its finalizer, on any thread.
struct Native {
  /// What the object stands for.
  enum class Kind { object, class_, selector, pointer, function, exception };

  Native(Engine& owner, Kind itsKind, void* stoodFor = nullptr)
      : engine(owner), kind(itsKind), pointer(stoodFor) {}
  Native(const Native&) = delete;
  Native& operator=(const Native&) = delete;
  virtual ~Native() = default;

  /// The object that lives as long as what this stands for; null for what lives by itself.
  virtual id keptObject() const {
    return kind == Kind::object ? static_cast<id>(pointer) : nullptr;
  }

  /// The data of `value`; null for what the loader did not make.
  static Native* of(JSContextRef context, JSValueRef value);

  Engine& engine;
  const Kind kind;
  /// The object, class, selector or address. Null for an object that has been deallocated since it
  /// was lent.
  void* pointer;
};

/// An object of the program. Its finalizer hands the reference to the release queue.
struct NativeObject : Native {
  NativeObject(Engine& owner, id object, bool holdsReference)
      : Native(owner, Kind::object, object), isOwned(holdsReference) {}
  ~NativeObject() override;

  /// Whether it holds a reference; not while the object is only lent.
  const bool isOwned;
};

/// A C++ exception that passes through a script.
struct NativeException : Native {
  NativeException(Engine& owner, Raised exception)
      : Native(owner, Kind::exception), raised(std::move(exception)) {}

  const Raised raised;
};

/// A call of a function that the loader made. Valid during it.
struct Call {
  JSContextRef context;
  JSObjectRef self;
  std::size_t count;
  const JSValueRef* arguments;

  /// The argument, or undefined without it.
  JSValueRef operator[](std::size_t index) const {
    return index < count ? arguments[index] : JSValueMakeUndefined(context);
  }
};

/// A function of the program or of the loader that scripts call. It may stand for something else,
/// too.
struct NativeFunction : Native {
  explicit NativeFunction(Engine& owner, Kind itsKind = Kind::function, void* stoodFor = nullptr)
      : Native(owner, itsKind, stoodFor) {}

  /// Does the work and returns its value. Whatever it throws or raises becomes an error of the
  /// script: a ProgramException one that carries the program's, any other a mistake.
  virtual JSValueRef call(const Call& call) = 0;
};

/// The class of all these objects in the engine. Never released.
JSClassRef nativeClass();
/// The class of those that can be called.
JSClassRef nativeFunctionClass();

}  // namespace tavlen::loader
