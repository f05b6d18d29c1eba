#include "cli/arguments/HookArgument.h"

#include <memory>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

#include "tavlen/foundation/text/Suggestion.h"

namespace tavlen::cli {

namespace {

constexpr const char* kInstanceMethodBegin = "-[";

/// Adds the prefix that the parser has removed: it reads "-[Class selector]" as the option "-["
/// with a value.
void restorePrefix(std::string& text) {
  // A method contains a blank; a custom name that ends in "]" may not.
  if (text.ends_with(']') && text.find('[') == std::string::npos &&
      text.find(' ') != std::string::npos)
    text = kInstanceMethodBegin + text;
}

/// Adds a positional argument that may be a method.
Option addMethodOr(Command command, const std::string& names, std::string& text, const char* help) {
  return command.text((std::string(kInstanceMethodBegin) + "," + names).c_str(), text, help)
      .required()
      .notEmpty()
      .transform(restorePrefix);
}

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
  return addMethodOr(command, "--method,METHOD", text, help).check(methodProblem);
}

std::string methodProblem(const std::string& text) {
  return methodNamed(text) ? "" : "not '-[Class selector]' or '+[Class selector]': " + text;
}

void addHookArgument(Command command, std::string& text) {
  addMethodOr(command, "--hook,HOOK", text,
              "The hook: '-[Class selector]', '+[Class selector]', or the name it was given");
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
