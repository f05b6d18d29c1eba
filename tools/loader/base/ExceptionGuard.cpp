#include "tools/loader/base/ExceptionGuard.h"

#include <utility>

#include "tools/loader/base/Messages.h"

extern "C" {
id tavlen_loader_run_guarded(void (*body)(void* context), void* context);
[[noreturn]] void tavlen_loader_raise(id object);
}

namespace tavlen::loader {

Raised Raised::adopting(id object) { return Raised(object); }

Raised Raised::retaining(id object) { return Raised(retain(object)); }

Raised::Raised(const Raised& other)
    : object_(retain(other.object_)), exception_(other.exception_) {}

Raised::Raised(Raised&& other) noexcept
    : object_(std::exchange(other.object_, nullptr)), exception_(std::move(other.exception_)) {}

Raised& Raised::operator=(Raised other) noexcept {
  std::swap(object_, other.object_);
  std::swap(exception_, other.exception_);
  return *this;
}

Raised::~Raised() { release(object_); }

void Raised::raise() && {
  if (exception_ != nullptr) std::rethrow_exception(exception_);
  // The one who catches an object does not own it: it lives as long as the pool of the catching
  // thread.
  tavlen_loader_raise(autorelease(std::exchange(object_, nullptr)));
}

id guarded(FunctionRef<void()> body) {
  return tavlen_loader_run_guarded(
      [](void* context) { (*static_cast<FunctionRef<void()>*>(context))(); }, &body);
}

}  // namespace tavlen::loader
