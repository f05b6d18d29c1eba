#include "tools/loader/preload/StartSettings.h"

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <string>
#include <string_view>

#include "tavlen/foundation/files/ExecutablePath.h"
#include "tavlen/tweaks/LoaderSettings.h"

namespace tavlen::loader {

namespace {

/// The variable, which is removed: programs that this one starts get none of them.
std::optional<std::string> taken(const char* name) {
  const char* value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): before main
  if (value == nullptr) return std::nullopt;
  std::string text = value;
  (void)::unsetenv(name);  // NOLINT(concurrency-mt-unsafe)
  return text;
}

/// Removes the loader from LD_PRELOAD, and leaves what others put there.
void leavePreload(std::string_view library) {
  constexpr const char* kPreload = "LD_PRELOAD";
  std::string rest;
  const std::string list = taken(kPreload).value_or(std::string());
  for (std::size_t begin = 0; begin < list.size();) {
    const std::size_t end = std::min(list.find_first_of(": ", begin), list.size());
    const std::string_view entry = std::string_view(list).substr(begin, end - begin);
    if (!entry.empty() && entry != library) rest.append(rest.empty() ? "" : ":").append(entry);
    begin = end + 1;
  }
  // NOLINTNEXTLINE(concurrency-mt-unsafe)
  if (!rest.empty()) (void)::setenv(kPreload, rest.c_str(), 1);
}

/// Reads and removes the settings. Returns nothing if they are not for this program.
std::optional<StartSettings> take() {
  const auto program = taken(loaderSettings::kProgram);
  const auto library = taken(loaderSettings::kLibrary);
  const auto tweak = taken(loaderSettings::kTweak);
  const auto events = taken(loaderSettings::kEvents);
  const bool isTracing = taken(loaderSettings::kTrace).has_value();
  const auto limit = taken(loaderSettings::kLimit);
  if (library) leavePreload(*library);
  if (!program || !tweak || !events || !limit || executablePath() != *program) return std::nullopt;
  return StartSettings{*tweak, std::stoi(*events), isTracing,
                       std::chrono::milliseconds(std::stol(*limit))};
}

}  // namespace

const std::optional<StartSettings>& StartSettings::get() {
  static const std::optional<StartSettings> settings = []() -> std::optional<StartSettings> {
    try {
      return take();
    } catch (const std::exception&) {
      return std::nullopt;  // the command reports that the tweak was not there
    }
  }();
  return settings;
}

}  // namespace tavlen::loader
