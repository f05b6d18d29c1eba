#include "cli/arguments/detail/ParserErrors.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstddef>
#include <optional>
#include <string_view>

#include "cli/arguments/detail/ParserRecords.h"
#include "tavlen/foundation/text/Suggestion.h"

namespace tavlen::cli {

namespace {

using Problem = std::optional<std::string>;

bool isGiven(const CLI::Option* option) { return option->count() > 0; }

std::string isOrAre(const std::vector<std::string>& titles) {
  return titles.size() == 1 ? " is missing" : " are missing";
}

/// Required arguments that are missing.
Problem missingArguments(const CLI::App& app) {
  std::vector<std::string> missing;
  for (const CLI::Option* option : optionsOf(app)) {
    if (option->get_required() && !isGiven(option)) missing.push_back(titleOf(*option));
  }
  if (missing.empty()) return std::nullopt;
  return listText(missing, "and") + isOrAre(missing);
}

/// A group of which too few or too many options are given.
Problem brokenRule(const CLI::App& app) {
  for (const CLI::App* group : groupsOf(app)) {
    std::vector<std::string> all;
    std::vector<std::string> given;
    for (const CLI::Option* option : optionsOf(*group)) {
      all.push_back(titleOf(*option));
      if (isGiven(option)) given.push_back(all.back());
    }
    const std::size_t most = group->get_require_option_max();
    if (given.size() < group->get_require_option_min()) return listText(all, "or") + " is missing";
    if (most > 0 && given.size() > most)
      return listText(given, "and") + " cannot be given together";
  }
  return std::nullopt;
}

Problem missingCommand(const CLI::App& app, const ParserState& state) {
  if (app.get_require_subcommand_min() == 0 || !app.get_subcommands().empty()) return std::nullopt;
  const CommandRecord record = recordOf(app, state);
  std::vector<std::string> names;
  for (const CommandRecord& command : record.commands) names.push_back(command.name);
  const bool isShort = names.size() < 10;
  return "a command is missing" + (isShort ? ": " + listText(names, "or") : std::string());
}

/// An option without one that it needs, or with one that it excludes.
Problem brokenPair(const CLI::App& app) {
  for (const CLI::Option* option : optionsOf(app)) {
    if (!isGiven(option)) continue;
    for (const CLI::Option* other : optionsOf(app)) {
      auto* const key = const_cast<CLI::Option*>(other);  // the parser's sets have such keys
      if (option->get_needs().contains(key) && !isGiven(other))
        return titleOf(*option) + " needs " + titleOf(*other);
      if (option->get_excludes().contains(key) && isGiven(other))
        return titleOf(*option) + " and " + titleOf(*other) + " cannot be given together";
    }
  }
  return std::nullopt;
}

/// The option of the chosen commands that `word` names.
const CLI::Option* optionNamed(const std::string& word, const CLI::App& app) {
  for (const CLI::App* command : chosenPath(app)) {
    for (const CLI::Option* option : optionsOf(*command)) {
      if (option->nonpositional() && option->check_name(word)) return option;
    }
  }
  return nullptr;
}

/// An option that is given too often, with a value too many, or without one.
Problem wrongValue(const CLI::App& app, const std::vector<std::string>& words) {
  for (const std::string& word : words) {
    if (word == "--") break;
    const std::string name = word.substr(0, word.find('='));
    const CLI::Option* const option = optionNamed(name, app);
    if (option != nullptr && name != word && option->get_items_expected_max() == 0)
      return name + " takes no value";
  }
  for (const CLI::App* command : chosenPath(app)) {
    for (const CLI::Option* option : optionsOf(*command)) {
      const auto most = static_cast<std::size_t>(option->get_items_expected_max());
      if (most > 0 && option->count() > most) return titleOf(*option) + " is given more than once";
    }
  }
  if (words.empty()) return std::nullopt;
  const CLI::Option* const last = optionNamed(words.back(), app);
  if (last == nullptr) return std::nullopt;
  return words.back() + " needs a value: " + last->get_type_name();
}

/// What is wrong with an option that the chosen command does not have.
std::string unexpectedOption(const std::string& word, const CLI::App& app) {
  const std::string name = word.substr(0, word.find('='));
  std::vector<std::string> names;
  for (const CLI::App* command : {chosenPath(app).back(), &app}) {
    for (const CLI::Option* option : optionsOf(*command)) {
      if (option->nonpositional()) names.push_back(titleOf(*option));
    }
  }
  const std::vector<std::string_view> known(names.begin(), names.end());
  if (std::find(known.begin(), known.end(), name) != known.end())
    return "\"" + name + R"(" must follow the command, and precede "--" if there is one)";
  return "unknown option \"" + name + "\"" +
         (closestName(name, known) ? suggestionText(name, known) : std::string());
}

std::string unexpectedArgument(const std::string& word) {
  return "unexpected argument \"" + word + "\"";
}

/// The name by which `words` have the option.
std::string writtenName(const CLI::Option& option, const std::vector<std::string>& words) {
  const auto nameIn = [](const std::string& word) { return word.substr(0, word.find('=')); };
  const auto found = std::find_if(words.begin(), words.end(), [&](const std::string& word) {
    return word.starts_with('-') && option.check_name(nameIn(word));
  });
  return found == words.end() ? titleOf(option) : nameIn(*found);
}

bool isOption(const std::string& word) { return word.starts_with('-') && !word.starts_with("-["); }

/// The commands that the user had chosen before `word`. The parser takes a later word for the
/// command if it does not know this one.
std::vector<const CLI::App*> pathBefore(const std::string& word, const CLI::App& app,
                                        const std::vector<std::string>& words) {
  std::vector<const CLI::App*> path = chosenPath(app);
  std::size_t depth = 1;
  for (const std::string& each : words) {
    if (each == word || depth == path.size()) break;
    if (each == path[depth]->get_name()) ++depth;
  }
  path.resize(depth);
  return path;
}

UsageError unexpected(const std::string& word, const CLI::App& app, const ParserState& state,
                      const std::vector<std::string>& words) {
  if (isOption(word)) return UsageError(unexpectedOption(word, app));
  std::string names;
  const std::vector<const CLI::App*> path = pathBefore(word, app, words);
  for (const CLI::App* command : path) names += (names.empty() ? "" : " ") + command->get_name();
  const CommandRecord command = recordOf(*path.back(), state);
  if (!command.needsCommand) return UsageError(unexpectedArgument(word));
  return UsageError::about(names, unknownCommandText(word, command));
}

}  // namespace

void refuseStrayArguments(const CLI::App& app, const std::vector<std::string>& words) {
  const std::vector<const CLI::App*> path = chosenPath(app);
  for (std::size_t i = 1; i + 1 < path.size(); ++i) {
    for (const CLI::Option* option : optionsOf(*path[i])) {
      if (!isGiven(option)) continue;
      throw UsageError(option->nonpositional()
                           ? unexpectedOption(writtenName(*option, words), app)
                           : unexpectedArgument(unmarked(option->results().front())));
    }
  }
}

UsageError usageError(const CLI::App& app, const ParserState& state,
                      const std::vector<std::string>& words, const CLI::ParseError& error) {
  // The parser reports a missing argument first; but if a word is unknown, that is the likely
  // cause.
  const bool isMissing = dynamic_cast<const CLI::RequiredError*>(&error) != nullptr;
  const std::vector<std::string> unknown = app.remaining(true);
  const bool isCommand = !unknown.empty() && !words.empty() && unknown.front() == words.front() &&
                         !isOption(words.front());
  if (isCommand || isMissing || dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr) {
    for (const std::string& word : unknown) {
      if (word != "--") return unexpected(unmarked(word), app, state, words);
    }
  }
  if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr) {
    if (Problem problem = wrongValue(app, words)) return UsageError(*problem);
  }
  for (const CLI::App* command : chosenPath(app)) {
    if (Problem problem = missingArguments(*command)) return UsageError(*problem);
    if (Problem problem = brokenPair(*command)) return UsageError(*problem);
    if (Problem problem = brokenRule(*command)) return UsageError(*problem);
    if (Problem problem = missingCommand(*command, state)) return UsageError(*problem);
  }
  return UsageError(error.what());
}

}  // namespace tavlen::cli
