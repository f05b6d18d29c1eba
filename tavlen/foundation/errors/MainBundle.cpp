#include "tavlen/foundation/errors/MainBundle.h"

#include <algorithm>

#include <mutex>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

#include "tavlen/foundation/errors/detail/StringTable.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/text/UserLocale.h"

namespace tavlen::MainBundle {

namespace {

struct State {
  std::mutex mutex;
  std::filesystem::path folder;
  /// Empty until the first look-up. Without entries when the bundle has no usable table.
  std::optional<StringTable> table;
};

/// Never destroyed: other threads may describe errors while the process ends.
State& state() {
  static State& state = *new State;
  return state;
}

/// The folders that may hold the table, the best first.
std::vector<std::filesystem::path> tableFolders(const std::filesystem::path& bundle) {
  std::vector<std::filesystem::path> folders;
  for (const std::string& locale : userLocales()) {
    for (std::string name : localeFallbacks(locale)) {
      const std::string withUnderscores = name;
      std::replace(name.begin(), name.end(), '_', '-');
      folders.push_back(bundle / (name + ".lproj"));
      if (name != withUnderscores) folders.push_back(bundle / (withUnderscores + ".lproj"));
    }
  }
  folders.push_back(bundle / "en.lproj");
  folders.push_back(bundle / "Base.lproj");
  folders.push_back(bundle);
  return folders;
}

StringTable readTable(const std::filesystem::path& bundle) {
  if (bundle.empty()) return {};
  for (const std::filesystem::path& folder : tableFolders(bundle)) {
    const std::filesystem::path file = folder / "Localizable.strings";
    std::error_code error;
    if (!std::filesystem::exists(file, error) && !error) continue;
    try {
      return StringTable::read(readFile(file)).value_or(StringTable());
    } catch (const std::system_error&) {
      return {};  // English text is better than an error about the text of an error
    }
  }
  return {};
}

}  // namespace

void setURL(std::filesystem::path folder) {
  const std::lock_guard lock(state().mutex);
  state().folder = std::move(folder);
  state().table.reset();
}

std::filesystem::path url() {
  const std::lock_guard lock(state().mutex);
  return state().folder;
}

std::string localizedString(const LocalizedText& text) {
  if (text.key.empty()) return std::string(text.english);
  const std::lock_guard lock(state().mutex);
  std::optional<StringTable>& table = state().table;
  if (!table) table = readTable(state().folder);
  const std::string* entry = table->find(text.key);
  return entry != nullptr ? *entry : std::string(text.english);
}

}  // namespace tavlen::MainBundle
