#include "tools/loader/hooks/OriginalCall.h"

#include <string>

#include "tools/loader/engine/Engine.h"
#include "tools/loader/hooks/Hook.h"
#include "tools/loader/values/ArgumentFrame.h"
#include "tools/loader/values/Values.h"

namespace tavlen::loader {

namespace {

constexpr std::size_t kOwn = 3;     // receiver, function, whether arguments were given
constexpr std::size_t kHidden = 2;  // of a method: receiver and selector

/// The record that belongs to the caller. Throws ScriptError if a function that is no hook calls,
/// or one that outlived its hook.
HookRecord& recordOf(Engine& engine, const Call& call) {
  HookRecord* record = HookStack::current().top();
  if (record == nullptr || &record->hook.engine() != &engine || call[0] != record->self)
    throw ScriptError("%orig is outside of the hook that it belongs to");
  if (JSValueIsObject(call.context, call[1]) && call[1] != record->hook.function())
    throw ScriptError("%orig is in a function that is no hook");
  return *record;
}

void setArguments(Engine& engine, const HookRecord& record, const Call& call,
                  ArgumentFrame& frame) {
  const CallSignature& signature = record.hook.signature();
  const std::size_t count = signature.arguments().size() - kHidden;
  const std::size_t passed = call.count - kOwn;
  const bool areGiven = JSValueToBoolean(call.context, call[2]);
  if (passed < count || (areGiven && passed > count)) {
    throw ScriptError("%orig passes " + std::to_string(passed) + " arguments of " +
                      std::to_string(count));
  }
  for (std::size_t i = 0; i < count; ++i) {
    const JSValueRef value = call[kOwn + i];
    // What the script left alone is passed on as it came, with what a number does not keep.
    if (value == record.values[i] && !signature.arguments()[i + kHidden]->isAggregate())
      frame.use(i + kHidden, record.arguments[i + kHidden]);
    else
      frame.set(engine, i + kHidden, value, i + 1);
  }
  if (record.hook.originalSignature().arguments().size() > count + kHidden)
    frame.setPointer(count + kHidden, nullptr);
}

}  // namespace

JSValueRef OriginalCall::call(const Call& call) {
  HookRecord& record = recordOf(engine, call);
  ArgumentFrame frame(record.hook.originalSignature());
  frame.use(0, record.arguments[0]);
  frame.use(1, record.arguments[1]);
  setArguments(engine, record, call, frame);
  return record.hook.callOriginal(record, frame);
}

}  // namespace tavlen::loader
