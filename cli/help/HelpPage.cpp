#include "cli/help/HelpPage.h"

#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <utility>

#include "cli/help/Examples.h"
#include "cli/terminal/Color.h"
#include "cli/terminal/DisplayWidth.h"
#include "cli/terminal/FoldedText.h"
#include "cli/terminal/TerminalWidth.h"

namespace tavlen::cli {

namespace {

constexpr std::size_t kWidestLabel = 22;
/// More examples are for `help --examples`.
constexpr std::size_t kMostExamples = 5;

using Entry = std::pair<std::string, std::string>;  // a label and its text

std::string heading(std::string_view text) {
  return colored(text, ColorRole::heading, STDOUT_FILENO) + "\n";
}

/// Labels on the left, texts on the right, folded; below a label that is too wide.
std::string entriesText(const std::vector<Entry>& entries) {
  const std::size_t columns = textColumns();
  const std::size_t widest = std::min(kWidestLabel, columns / 3);
  std::size_t indent = 0;
  for (const auto& [label, text] : entries) {
    if (const std::size_t width = displayWidth(label); width <= widest)
      indent = std::max(indent, width);
  }
  indent += 4;
  std::string shown;
  for (const auto& [label, text] : entries) {
    std::string start = "  " + label;
    const std::size_t width = displayWidth(start);
    start +=
        width + 2 <= indent ? std::string(indent - width, ' ') : "\n" + std::string(indent, ' ');
    shown += start + foldedText(text, indent, columns);
  }
  return shown;
}

std::vector<Entry> optionEntries(const std::vector<OptionRecord>& options) {
  std::vector<Entry> entries;
  entries.reserve(options.size());
  for (const OptionRecord& option : options)
    entries.emplace_back(labelOf(option), describedHelp(option));
  return entries;
}

std::string section(std::string_view title, const std::vector<Entry>& entries) {
  return entries.empty() ? "" : "\n" + heading(title) + entriesText(entries);
}

/// The subcommands below their headings, in one table: the columns are the same below all of them.
std::string commandsText(const CommandRecord& command) {
  std::size_t widest = 0;
  for (const CommandRecord& each : command.commands) {
    if (!each.heading.empty()) widest = std::max(widest, each.name.size());
  }
  std::string text;
  for (const std::string& title : command.headings()) {
    text += heading(title);
    for (const CommandRecord& each : command.commands) {
      if (each.heading != title) continue;
      const std::string label = "  " + each.name + std::string(widest - each.name.size() + 2, ' ');
      text += label + foldedText(each.description, label.size(), textColumns());
    }
  }
  return text;
}

std::string examplesText(const CommandPath& path) {
  std::vector<Example> shown = examplesOf(wordsOf(path));
  if (shown.empty()) return "";
  shown.resize(std::min(shown.size(), kMostExamples));
  std::string text = "\n" + heading(shown.size() == 1 ? "Example" : "Examples");
  for (const Example& example : shown) text += "  " + exampleText(example) + "\n";
  return text;
}

/// The page of the command as a whole, which fits a screen.
std::string mainPage(const CommandPath& path) {
  const CommandRecord& command = *path.back();
  std::vector<std::string> names;
  for (const OptionRecord& option : command.options) names.push_back(option.title());
  const std::string help = command.name + " help";
  const std::string hint = "\"" + help + " COMMAND\" describes a command; for example: " +
                           std::string(examplesOf(help).front().line);
  return usageOf(path) + "\n" + commandsText(command) + heading("Options of all commands") + "  " +
         foldedText(listText(names, "and"), 2, textColumns()) + foldedText(hint, 0, textColumns());
}

}  // namespace

std::string labelOf(const OptionRecord& option) {
  std::string label;
  for (const std::string& name : option.names) label += (label.empty() ? "" : ", ") + name;
  if (option.placeholder.empty()) return label;
  return label + (label.empty() ? "" : " ") + option.placeholder + (option.isRepeated ? "..." : "");
}

std::string describedHelp(const OptionRecord& option) {
  std::string text = option.help;
  const bool isListed = option.placeholder.find('|') != option.placeholder.npos;
  if (!option.values.empty() && !isListed) text += ": " + listText(option.values, "or");
  if (!option.defaultValue.empty()) text += "; the default is " + option.defaultValue;
  if (!option.needs.empty()) text += "; only with " + listText(option.needs, "and");
  if (!option.excludes.empty()) text += "; not with " + listText(option.excludes, "or");
  if (!option.variable.empty()) text += "; also by the variable " + option.variable;
  return text;
}

std::string ruleText(const OptionRule& rule) {
  const std::string list = listText(rule.titles, "or");
  if (rule.most == 1) return (rule.least == 1 ? "Exactly one of " : "At most one of ") + list;
  return "At least " + std::string(rule.least == 1 ? "one" : std::to_string(rule.least)) + " of " +
         list;
}

std::string usageOf(const CommandPath& path) {
  const CommandRecord& command = *path.back();
  std::string usage = wordsOf(path);
  for (const OptionRecord& option : command.options) {
    if (option.isRequired) usage += " " + option.names.back() + " " + option.placeholder;
  }
  if (std::any_of(command.options.begin(), command.options.end(),
                  [](const OptionRecord& option) { return !option.isRequired; }))
    usage += " [OPTION...]";
  for (const OptionRecord& argument : command.arguments) {
    const std::string label = labelOf(argument);
    usage += " " + (argument.isRequired ? label : "[" + label + "]");
  }
  if (!command.commands.empty()) usage += command.needsCommand ? " COMMAND ..." : " [COMMAND ...]";
  return usage;
}

std::string helpPage(const CommandPath& path) {
  if (path.size() == 1) return mainPage(path);
  const CommandRecord& command = *path.back();
  std::string text = foldedText(command.description + ".", 0, textColumns()) + "\n";
  text += heading("Usage") + "  " + foldedText(usageOf(path), 4, textColumns());
  for (const OptionRule& rule : command.rules)
    text += "  " + foldedText(ruleText(rule) + ".", 2, textColumns());
  if (!command.commands.empty()) text += "\n" + commandsText(command);
  text += section("Arguments", optionEntries(command.arguments));
  text += section("Options", optionEntries(command.options));
  text += section("Options of all commands", optionEntries(inheritedOptions(path)));
  return text + examplesText(path);
}

}  // namespace tavlen::cli
