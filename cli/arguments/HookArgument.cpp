#include "cli/arguments/HookArgument.h"

#include <memory>
#include <stdexcept>
#include <utility>

namespace tavlen::cli {

void addHookArgument(Command command, std::string& text) {
  command
      .text("HOOK", text,
            "The hook: '-[Class selector]', '+[Class selector]', or the name it was given")
      .required()
      .notEmpty();
}

HookManager hookArgument(TweakFile::Opened tweak, const std::string& text) {
  HookManager manager = {
      std::move(tweak.file), {}, std::make_shared<TweakFile::Manifest>(std::move(tweak.manifest))};
  std::optional<MethodIdentity> named;
  bool isAmbiguous = false;
  for (const BoxedOptional<Hook>& hook : manager.opened->_hooks) {
    if (!hook) continue;
    if (methodText(hook->identity()) == text) {
      manager.identity = hook->identity();
      return manager;
    }
    if (hook->customName != text) continue;
    isAmbiguous = isAmbiguous || named.has_value();
    named = hook->identity();
  }
  if (!named) throw HookManager::Error::hookNotFound();
  if (isAmbiguous)
    throw std::runtime_error("several hooks have that name; use '-[Class selector]' instead");
  manager.identity = std::move(*named);
  return manager;
}

}  // namespace tavlen::cli
