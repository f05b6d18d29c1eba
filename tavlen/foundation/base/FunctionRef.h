#pragma once

#include <memory>
#include <type_traits>
#include <utility>

namespace tavlen {

/// Declared for function types only; see the specialisation below.
template <class Signature>
class FunctionRef;

/// A non-owning reference to a callable, for parameters of virtual functions: no copy, no
/// allocation. Valid only while the callable lives, so pass it down the stack and never store it.
template <class Result, class... Arguments>
class FunctionRef<Result(Arguments...)> {
 public:
  /// Refers to `callable`, which must outlive this object.
  template <class Callable>
  requires(!std::is_same_v<std::remove_cvref_t<Callable>, FunctionRef>)
      FunctionRef(Callable&& callable)  // NOLINT(google-explicit-constructor,
                                        // bugprone-forwarding-reference-overload)
      : object_(const_cast<void*>(static_cast<const void*>(std::addressof(callable)))),
        call_([](void* object, Arguments... arguments) -> Result {
          return (*static_cast<std::remove_reference_t<Callable>*>(object))(
              std::forward<Arguments>(arguments)...);
        }) {}

  /// Calls the callable. Its exceptions propagate.
  Result operator()(Arguments... arguments) const {
    return call_(object_, std::forward<Arguments>(arguments)...);
  }

 private:
  void* object_;
  Result (*call_)(void*, Arguments...);
};

}  // namespace tavlen
