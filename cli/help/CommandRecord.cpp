#include "cli/help/CommandRecord.h"

#include <algorithm>

#include "tavlen/foundation/text/Suggestion.h"

namespace tavlen::cli {

bool OptionRecord::hasName(std::string_view name) const {
  return std::find(names.begin(), names.end(), name) != names.end();
}

const CommandRecord* CommandRecord::find(std::string_view word) const {
  const auto found = std::find_if(commands.begin(), commands.end(),
                                  [&](const CommandRecord& each) { return each.name == word; });
  return found == commands.end() ? nullptr : &*found;
}

std::vector<std::string> CommandRecord::headings() const {
  std::vector<std::string> headings;
  for (const CommandRecord& each : commands) {
    if (!each.heading.empty() &&
        std::find(headings.begin(), headings.end(), each.heading) == headings.end())
      headings.push_back(each.heading);
  }
  return headings;
}

const OptionRecord* CommandRecord::option(std::string_view word) const {
  const auto found = std::find_if(options.begin(), options.end(),
                                  [&](const OptionRecord& each) { return each.hasName(word); });
  return found == options.end() ? nullptr : &*found;
}

CommandPath pathTo(const CommandRecord& root, std::span<const std::string> words) {
  CommandPath path = {&root};
  for (const std::string& word : words) {
    const CommandRecord* next = path.back()->find(word);
    if (next == nullptr) break;
    path.push_back(next);
  }
  return path;
}

std::string wordsOf(const CommandPath& path) {
  std::string words;
  for (const CommandRecord* command : path) words += (words.empty() ? "" : " ") + command->name;
  return words;
}

std::vector<OptionRecord> inheritedOptions(const CommandPath& path) {
  std::vector<OptionRecord> inherited;
  const CommandRecord& command = *path.back();
  if (path.size() < 2) return inherited;
  for (const OptionRecord& option : path.front()->options) {
    if (command.option(option.title()) == nullptr) inherited.push_back(option);
  }
  return inherited;
}

std::string unknownCommandText(const std::string& name, const CommandRecord& command) {
  std::vector<std::string_view> known;
  for (const CommandRecord& each : command.commands) {
    if (!each.heading.empty()) known.push_back(each.name);
  }
  return "unknown command \"" + name + "\"" + suggestionText(name, known);
}

std::string listText(const std::vector<std::string>& texts, std::string_view word) {
  std::string list;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    if (i > 0 && i + 1 == texts.size()) {
      list.append(" ").append(word).append(" ");
    } else if (i > 0) {
      list += ", ";
    }
    list += texts[i];
  }
  return list;
}

}  // namespace tavlen::cli
