#include "cli/arguments/detail/ParserRecords.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace tavlen::cli {

namespace {

/// Begins a word that the parser must not take for an option. No argument contains it.
constexpr char kMark = '\0';

/// The parser's own placeholder, which says nothing.
constexpr const char* kText = "TEXT";

bool isPositional(const CLI::Option& option) { return option.get_positional(); }

std::string placeholderOf(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  if (isPositional(option)) return type.empty() || type == kText ? option.get_name(true) : type;
  return option.get_items_expected_max() == 0 ? "" : type;
}

/// The options in `wanted`, a set ordered by addresses, in the order of the command's.
template <class Options>
std::vector<std::string> titlesOf(const Options& wanted, const CLI::Option& option) {
  std::vector<std::string> titles;
  for (const CLI::Option* each : wanted) {
    if (each != &option) titles.push_back(titleOf(*each));
  }
  std::sort(titles.begin(), titles.end());
  return titles;
}

std::vector<std::string> namesOf(const CLI::Option& option) {
  std::vector<std::string> names;
  for (const std::string& name : option.get_snames()) names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) names.push_back("--" + name);
  return names;
}

OptionRule ruleOf(const CLI::App& group) {
  OptionRule rule{{}, group.get_require_option_min(), group.get_require_option_max()};
  for (const CLI::Option* option : optionsOf(group)) rule.titles.push_back(titleOf(*option));
  return rule;
}

}  // namespace

std::string marked(std::string word) {
  if (word.starts_with("-[") || word == "++") word.insert(word.begin(), kMark);
  return word;
}

std::string unmarked(std::string word) {
  if (word.starts_with(kMark)) word.erase(word.begin());
  return word;
}

std::string titleOf(const CLI::Option& option) {
  return isPositional(option) ? placeholderOf(option) : option.get_name();
}

std::vector<const CLI::App*> groupsOf(const CLI::App& app) {
  return app.get_subcommands([](const CLI::App* each) { return each->get_name().empty(); });
}

std::vector<const CLI::Option*> optionsOf(const CLI::App& app) {
  std::vector<const CLI::Option*> options =
      app.get_options([&](const CLI::Option* option) { return option != app.get_help_ptr(); });
  for (const CLI::App* group : groupsOf(app)) {
    const std::vector<const CLI::Option*> more = optionsOf(*group);
    options.insert(options.end(), more.begin(), more.end());
  }
  return options;
}

std::vector<const CLI::App*> chosenPath(const CLI::App& app) {
  std::vector<const CLI::App*> path = {&app};
  while (!path.back()->get_subcommands().empty())
    path.push_back(path.back()->get_subcommands().front());
  return path;
}

OptionRecord recordOf(const CLI::Option& option, const ParserState& state) {
  OptionRecord record;
  if (!isPositional(option)) record.names = namesOf(option);
  record.placeholder = placeholderOf(option);
  record.help = option.get_description();
  if (const auto values = state.values.find(&option); values != state.values.end())
    record.values = values->second;
  record.needs = titlesOf(option.get_needs(), option);
  record.excludes = titlesOf(option.get_excludes(), option);
  record.variable = option.get_envname();
  record.defaultValue = option.get_default_str();
  record.isRequired = option.get_required();
  record.isRepeated = option.get_multi_option_policy() == CLI::MultiOptionPolicy::TakeAll;
  return record;
}

CommandRecord recordOf(const CLI::App& app, const ParserState& state) {
  CommandRecord record;
  record.name = app.get_name();
  record.description = app.get_description();
  record.heading = app.get_group();
  record.needsCommand = app.get_require_subcommand_min() > 0;
  for (const CLI::Option* option : optionsOf(app))
    (isPositional(*option) ? record.arguments : record.options).push_back(recordOf(*option, state));
  for (const CLI::App* group : groupsOf(app)) {
    if (group->get_require_option_min() > 0 || group->get_require_option_max() > 0)
      record.rules.push_back(ruleOf(*group));
  }
  for (const CLI::App* command :
       app.get_subcommands([](const CLI::App* each) { return !each->get_name().empty(); }))
    record.commands.push_back(recordOf(*command, state));
  return record;
}

}  // namespace tavlen::cli
