#include "tavlen/editing/RootParameterManager.h"

#include "tavlen/editing/ParameterError.h"
#include "tavlen/tweaks/Hook.h"

namespace tavlen {

Parameter RootParameterManager::parameter() const {
  Hook hook = hookManager.hook();
  const auto found = hook._args.find(parameterIdx);
  if (found == hook._args.end()) throw ParameterError::notFound(parameterIdx, tweak());
  return std::move(found->second.value);
}

void RootParameterManager::setParameter(Parameter parameter) const {
  hookManager.updateHook(
      [&](Hook& hook) { hook._args[parameterIdx].value = std::move(parameter); });
}

void RootParameterManager::updateParameter(FunctionRef<void(Parameter&)> change) const {
  hookManager.updateHook([&](Hook& hook) {
    const auto found = hook._args.find(parameterIdx);
    if (found == hook._args.end()) throw ParameterError::notFound(parameterIdx, tweak());
    change(found->second.value);
  });
}

std::shared_ptr<const ParameterManager> RootParameterManager::shared() const {
  return std::make_shared<const RootParameterManager>(*this);
}

}  // namespace tavlen
