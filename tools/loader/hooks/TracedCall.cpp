#include "tools/loader/hooks/TracedCall.h"

#include <string>
#include <vector>

#include "tools/loader/base/Messages.h"
#include "tools/loader/engine/Engine.h"
#include "tools/loader/engine/ShownValue.h"
#include "tools/loader/hooks/Hook.h"
#include "tools/loader/values/Values.h"

namespace tavlen::loader {

TracedCall::TracedCall(const Hook& hook, const HookRecord& record) : hook_(hook) {
  Engine& engine = hook.engine();
  event_.event = LoaderEvent::kCall;
  event_.method = hook.text();
  event_.receiver = shownValue(engine, record.self);
  auto& arguments = event_.arguments.emplace();
  for (std::size_t i = 0; i + 2 < hook.signature().arguments().size(); ++i)
    arguments.push_back(shownValue(engine, record.values[i]));
  start_ = std::chrono::steady_clock::now();
}

void TracedCall::finish(const void* result, const Raised* raised) {
  const std::chrono::duration<double, std::micro> time = std::chrono::steady_clock::now() - start_;
  event_.microseconds = time.count();
  const ValueType& type = hook_.signature().result();
  if (raised != nullptr) {
    event_.message =
        "raised " + (raised->object() != nullptr ? className(raised->object()) : "a C++ exception");
  } else if (type.kind() != ValueType::Kind::nothing) {
    const HookStack::OwnWork own;
    IdentityTable& objects = hook_.engine().objects();
    // The wrapper that is made here must not outlive an alloc method's result; see returnAnswer().
    const bool isLent =
        hook_.family().allocates && !objects.isWrapped(*static_cast<const id*>(result));
    const JSValueRef value = readValue(hook_.engine(), type, result);
    event_.result = shownValue(hook_.engine(), value);
    if (isLent) {
      objects.giveUp(value);
      release(*static_cast<const id*>(result));
    }
  }
  hook_.engine().report(event_);
}

}  // namespace tavlen::loader
