#include "cli/arguments/HookArgument.h"

#include <memory>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

#include "tavlen/foundation/text/Suggestion.h"

namespace tavlen::cli {

namespace {

/// Throws for a text that names no hook, and suggests one.
[[noreturn]] void refuseUnknown(const TweakFile::Manifest& manifest, const std::string& text) {
  std::vector<std::string> texts;
  for (const BoxedOptional<Hook>& hook : manifest._hooks) {
    if (!hook) continue;
    texts.push_back(methodText(hook->identity()));
    if (hook->customName) texts.push_back(*hook->customName);
  }
  const std::vector<std::string_view> known(texts.begin(), texts.end());
  throw std::runtime_error("the tweak has no such hook" + suggestionText(text, known));
}

}  // namespace

Option addMethodArgument(Command command, std::string& text, const char* help) {
  return command.text("METHOD", text, help).required().notEmpty().check(methodProblem);
}

std::string methodProblem(const std::string& text) {
  return methodNamed(text) ? "" : text + ": expected '-[Class selector]' or '+[Class selector]'";
}

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
  std::vector<MethodIdentity> named;
  for (const BoxedOptional<Hook>& hook : manager.opened->_hooks) {
    if (!hook) continue;
    if (methodText(hook->identity()) == text) {
      manager.identity = hook->identity();
      return manager;
    }
    if (hook->customName == text) named.push_back(hook->identity());
  }
  if (named.empty()) refuseUnknown(*manager.opened, text);
  if (named.size() > 1) {
    std::string methods;
    for (const MethodIdentity& identity : named)
      methods.append(methods.empty() ? "" : ", ").append(methodText(identity));
    throw std::runtime_error("several hooks have that name; name one by its method: " + methods);
  }
  manager.identity = std::move(named.front());
  return manager;
}

}  // namespace tavlen::cli
