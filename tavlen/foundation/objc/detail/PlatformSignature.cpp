#include "tavlen/foundation/objc/detail/PlatformSignature.h"

#include <optional>
#include <stdexcept>

#include "tavlen/foundation/objc/ObjCRuntime.h"
#include "tavlen/foundation/objc/detail/TypeScanner.h"

namespace tavlen {

namespace {

using namespace ObjCRuntime;

/// Whether `encoding` may be passed to the platform. A recursive reader such as GNUstep's would
/// overflow the stack on deeply nested brackets and pointers, which no guard catches. The limits
/// are far above what compilers emit.
bool isShallow(std::string_view encoding) {
  constexpr int kMostBrackets = 128;
  constexpr int kLongestPrefix = 16;
  int brackets = 0;
  int prefix = 0;
  for (const char c : encoding) {
    const auto isOneOf = [c](std::string_view characters) {
      return characters.find(c) != std::string_view::npos;
    };
    prefix = c == '^' || isOneOf(kTypeQualifiers) ? prefix + 1 : 0;
    if (isOneOf("{([<")) ++brackets;
    if (isOneOf("})]>") && brackets > 0) --brackets;
    if (brackets > kMostBrackets || prefix > kLongestPrefix) return false;
  }
  return true;
}

class PlatformSignature : public MethodSignature {
 public:
  /// Takes over the caller's reference to `signature`.
  explicit PlatformSignature(id signature) : signature_(signature) {}
  PlatformSignature(const PlatformSignature&) = delete;
  PlatformSignature& operator=(const PlatformSignature&) = delete;
  ~PlatformSignature() override {
    const AutoreleasePool pool;
    runGuarded([this] { send<void>(signature_, "release"); });
  }

  std::size_t numberOfArguments() const override {
    return answer<unsigned long>("numberOfArguments");
  }
  std::size_t frameLength() const override { return answer<unsigned long>("frameLength"); }
  bool isOneway() const override { return answer<BOOL>("isOneway") != NO; }
  std::size_t methodReturnLength() const override {
    return answer<unsigned long>("methodReturnLength");
  }
  std::string getArgumentTypeAtIndex(std::size_t index) const override {
    if (index >= numberOfArguments()) {
      throw std::out_of_range("the method has no argument " + std::to_string(index));
    }
    return textOf([&] {
      return send<const char*>(signature_,
                               "getArgumentTypeAtIndex:", static_cast<unsigned long>(index));
    });
  }
  std::string methodReturnType() const override {
    return textOf([this] { return send<const char*>(signature_, "methodReturnType"); });
  }
  std::string description() const override { return objectText("description"); }
  std::string debugDescription() const override {
    const bool hasOne = respondsTo(signature_, "debugDescription");
    return objectText(hasOne ? "debugDescription" : "description");
  }

 private:
  template <class Result>
  Result answer(const char* selector) const {
    Result result{};
    const AutoreleasePool pool;
    runGuarded([&] { result = send<Result>(signature_, selector); });
    return result;
  }

  /// Copies the text that `ask` returns, because the platform's text lives only as long as its
  /// pool.
  template <class Ask>
  static std::string textOf(const Ask& ask) {
    std::string copy;
    const AutoreleasePool pool;
    runGuarded([&] {
      if (const char* const text = ask()) copy = text;
    });
    return copy;
  }

  std::string objectText(const char* selector) const {
    std::optional<std::string> answer;
    const AutoreleasePool pool;
    runGuarded([&] { answer = text(send(signature_, selector)); });
    return answer.value_or("");
  }

  id signature_;
};

}  // namespace

std::shared_ptr<const MethodSignature> platformSignature(std::string_view encoding) {
  // The platform would ignore everything after a NUL.
  if (encoding.find('\0') != std::string_view::npos || !isShallow(encoding)) return nullptr;
  const std::string types(encoding);
  std::shared_ptr<const MethodSignature> signature;
  const AutoreleasePool pool;
  runGuarded([&] {
    signature = platformSignature(
        send(classNamed("NSMethodSignature"), "signatureWithObjCTypes:", types.c_str()));
  });
  return signature;
}

std::shared_ptr<const MethodSignature> platformSignature(objc_object* signature) {
  id retained = nullptr;
  runGuarded([&] { retained = send(signature, "retain"); });
  if (retained == nullptr) return nullptr;
  return std::make_shared<PlatformSignature>(retained);
}

}  // namespace tavlen
