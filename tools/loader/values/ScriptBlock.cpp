#include "tools/loader/values/ScriptBlock.h"

#include <cstring>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "tavlen/foundation/objc/ObjCBlock.h"
#include "tools/loader/base/BlockObject.h"
#include "tools/loader/engine/Engine.h"
#include "tools/loader/engine/ErrorValues.h"
#include "tools/loader/engine/HookStack.h"
#include "tools/loader/values/BlockType.h"
#include "tools/loader/values/Values.h"

namespace tavlen::loader {

namespace {

/// The function that a block has captured. It is protected until the last copy of the block ends.
class HeldFunction {
 public:
  HeldFunction(Engine& engine, JSObjectRef function) : engine_(&engine), function_(function) {
    JSValueProtect(engine.context(), function);
  }
  HeldFunction(HeldFunction&& other) noexcept
      : engine_(other.engine_), function_(std::exchange(other.function_, nullptr)) {}
  HeldFunction& operator=(HeldFunction&&) = delete;
  ~HeldFunction() {
    // A forked child empties no queue.
    if (function_ != nullptr && !engine_->isStopped()) engine_->releases().add(function_);
  }

  Engine& engine() const { return *engine_; }
  JSObjectRef function() const { return function_; }

 private:
  Engine* engine_;
  JSObjectRef function_;
};

/// One call. It may end the block that it is a call of.
class BlockCall {
 public:
  BlockCall(const HeldFunction& held, const CallSignature& signature)
      : engine_(held.engine()), function_(held.function()), signature_(signature) {}

  /// Returns what the function raised. The result is zero unless the function gave one.
  std::optional<Raised> run(void** arguments, void* result) {
    clear(result);
    // First, because a forked child may find the lock that the stack of a new thread takes held.
    if (engine_.isStopped()) return std::nullopt;
    HookStack& stack = HookStack::current();
    if (stack.isOwnWork()) return std::nullopt;
    if (!stack.hasRoom()) {
      engine_.reportNoRoom(stack, engine_.outside());
      return std::nullopt;
    }
    const auto failure = failureOf([&] { read(arguments); });
    if (failure) {
      report("the call: " + *failure);
      return std::nullopt;
    }
    std::optional<Raised> raised = runScript(stack, result);
    if (stack.top() == nullptr && !engine_.releases().isEmpty()) engine_.releases().drain();
    return raised;
  }

 private:
  std::size_t count() const { return signature_.arguments().size() - 1; }

  void clear(void* result) const {
    if (signature_.result().kind() != ValueType::Kind::nothing)
      std::memset(result, 0, signature_.resultSize());
  }

  void report(const std::string& message) {
    engine_.reportMistake({}, kBlock + message, nullptr, function_);
  }

  void read(void** arguments) {
    const HookStack::OwnWork own;
    for (std::size_t i = 0; i < count(); ++i)
      values_[i] = readValue(engine_, *signature_.arguments()[i + 1], arguments[i + 1]);
  }

  std::optional<Raised> runScript(HookStack& stack, void* result) {
    const HookStack::OutermostCode computing(engine_.outside(), stack);
    JSValueRef thrown = nullptr;
    const JSValueRef value =
        JSObjectCallAsFunction(engine_.context(), function_, nullptr, count(), values_, &thrown);
    if (thrown != nullptr) {
      if (std::optional<Raised> raised = raisedBy(engine_, thrown)) return raised;
      reportThrown(engine_, {}, kBlock, thrown, function_);
    } else if (const auto failure = failureOf(
                   [&] { writeResult(engine_, signature_.result(), value, result, false); })) {
      report("the result: " + *failure);
      clear(result);
    }
    return std::nullopt;
  }

  static constexpr const char* kBlock = "a block: ";

  Engine& engine_;
  JSObjectRef function_;  ///< also here, where the collector sees it
  const CallSignature& signature_;
  // NOLINTNEXTLINE(modernize-avoid-c-arrays): uninitialised
  JSValueRef values_[CallSignature::kMostArguments];
};

}  // namespace

id newScriptBlock(Engine& engine, const BlockType& type, JSObjectRef function) {
  const ObjCBlock block = makeBlockWithCode(type.code(), HeldFunction(engine, function));
  if (id object = newBlockObject(block.get())) return object;
  throw std::runtime_error("no Foundation is loaded to keep a block");
}

void enterScriptBlock(ffi_cif* /*cif*/, void* result, void** arguments, void* type) {
  BlockCall call(capturedBy<HeldFunction>(*static_cast<void**>(arguments[0])),
                 *static_cast<const BlockType*>(type)->signature());
  if (std::optional<Raised> raised = call.run(arguments, result)) std::move(*raised).raise();
}

}  // namespace tavlen::loader
