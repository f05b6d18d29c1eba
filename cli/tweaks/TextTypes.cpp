#include "cli/tweaks/TextTypes.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "cli/arguments/AppArgument.h"
#include "cli/classes/MethodSearch.h"
#include "cli/terminal/ShownText.h"

namespace tavlen::cli {

namespace {

std::vector<std::size_t> hooksWithoutTypes(const TweakText& text) {
  std::vector<std::size_t> hooks;
  for (std::size_t i = 0; i < text.hooks.size(); ++i) {
    if (!text.hooks[i].types) hooks.push_back(i);
  }
  return hooks;
}

const std::string& classOf(const TweakText& text, std::size_t hook) {
  return text.manifest._hooks[hook]->className;
}

/// The class of all those hooks; nothing if there are several.
std::optional<std::string> onlyClass(const TweakText& text, const std::vector<std::size_t>& hooks) {
  const std::string& first = classOf(text, hooks.front());
  const bool isOnly = std::all_of(hooks.begin(), hooks.end(),
                                  [&](std::size_t hook) { return classOf(text, hook) == first; });
  return isOnly ? std::optional(first) : std::nullopt;
}

void setTypes(TweakText& text, const std::vector<std::size_t>& hooks, const ImageArgument& app,
              TextMessages& messages) {
  const ClassDump dump = dumpClasses(app, onlyClass(text, hooks));
  bool isComplete = true;
  for (const std::size_t hook : hooks) {
    const MethodIdentity identity = text.manifest._hooks[hook]->identity();
    if (const auto method = ownMethod(dump, identity)) {
      text.setTypes(hook, method->encoding.str());
      continue;
    }
    isComplete = false;
    const bool isOfKnownClass = hasClass(dump, identity.className);
    messages.error(text.hooks[hook].method, "unknown-types",
                   "no types, and " + std::string(isOfKnownClass ? "" : "the app ") +
                       missingMethodText(dump, identity));
  }
  if (!isComplete) reportFaults(dump, app);
}

}  // namespace

void lookUpTypes(TweakText& text, TextMessages& messages) {
  const std::vector<std::size_t> hooks = hooksWithoutTypes(text);
  if (hooks.empty()) return;
  try {
    ImageArgument app;
    // By the path of an app of the device: the identifier in a text from elsewhere must not name a
    // file to load.
    app.bundleID = text.manifest.configuration.bundleID;
    app.image = appWithBundleID(*app.bundleID)->appDir().string();
    setTypes(text, hooks, app, messages);
  } catch (const std::exception& error) {
    const auto* failure = dynamic_cast<const std::system_error*>(&error);
    if (failure != nullptr && failure->code() == std::errc::operation_canceled) throw;
    messages.error(text.hooks[hooks.front()].method, "unknown-types",
                   "no types, and the app's classes cannot be read: " + errorText(error));
  }
}

}  // namespace tavlen::cli
