#pragma once

#include <objc/objc.h>

#include <exception>
#include <variant>

#include "tavlen/foundation/base/FunctionRef.h"

namespace tavlen::loader {

/// An exception of the program on its way through a script: an Objective-C object, which this value
/// retains, or a C++ exception. A copyable value; threads: any.
class Raised {
 public:
  /// Takes over a reference to `object`.
  static Raised adopting(id object);
  /// Retains `object`.
  static Raised retaining(id object);
  explicit Raised(std::exception_ptr exception) : exception_(std::move(exception)) {}
  Raised(const Raised& other);
  Raised(Raised&& other) noexcept;
  Raised& operator=(Raised other) noexcept;
  ~Raised();

  /// The object; null for a C++ exception.
  id object() const { return object_; }
  /// Raises it again, as itself.
  [[noreturn]] void raise() &&;

 private:
  explicit Raised(id object) : object_(object) {}

  id object_ = nullptr;
  std::exception_ptr exception_;
};

/// Runs `body`, which may send any message, and returns the Objective-C exception that ended it;
/// the caller owns the object. Returns null when there was none. C++ exceptions pass. Nothing may
/// unwind through the engine, so that whatever it calls stands in one of these.
id guarded(FunctionRef<void()> body);

}  // namespace tavlen::loader
