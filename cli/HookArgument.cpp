#include "cli/HookArgument.h"

#include <CLI/CLI.hpp>
#include <optional>
#include <stdexcept>

#include "cli/ArgumentChecks.h"
#include "tavlen/tweaks/Manifest.h"

namespace tavlen::cli {

namespace {

constexpr const char* kInstanceMethodBegin = "-[";

/// The parser takes "-[Class selector]" for the option "-[" with its value behind it.
std::string withPrefix(std::string& text) {
  // A method has a blank inside; a name that ends in "]" may have none.
  if (text.ends_with(']') && text.find('[') == std::string::npos &&
      text.find(' ') != std::string::npos)
    text = kInstanceMethodBegin + text;
  return "";
}

}  // namespace

std::string methodText(const MethodIdentity& identity) {
  return (identity.isClassMethod ? "+[" : kInstanceMethodBegin) + identity.className + " " +
         identity.selector + "]";
}

void addHookArgument(CLI::App& command, std::string& text) {
  command
      .add_option(std::string(kInstanceMethodBegin) + ",--hook,HOOK", text,
                  "The hook: '-[Class selector]', '+[Class selector]', or the name it was given")
      ->required()
      ->check(notEmpty())
      ->transform(CLI::Validator(withPrefix, ""));
}

HookManager hookArgument(const std::shared_ptr<TweakFile>& tweak, const std::string& text) {
  std::optional<MethodIdentity> named;
  bool isAmbiguous = false;
  for (const std::optional<Hook>& hook : tweak->manifest()._hooks) {
    if (!hook) continue;
    if (methodText(hook->identity()) == text) return tweak->managerFor(hook->identity());
    if (hook->customName != text) continue;
    isAmbiguous = isAmbiguous || named.has_value();
    named = hook->identity();
  }
  if (!named) throw HookManager::Error::hookNotFound();
  if (isAmbiguous)
    throw std::runtime_error("several hooks have that name; name one as '-[Class selector]'");
  return tweak->managerFor(*named);
}

}  // namespace tavlen::cli
