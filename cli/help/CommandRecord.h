#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The command's options as plain data: what help, the manual page and completion are made of.
namespace tavlen::cli {

/// An option, a flag or a positional argument.
struct OptionRecord {
  std::vector<std::string> names;   ///< "-o", "--output"; empty for a positional argument
  std::string placeholder;          ///< "TWEAK", "FILE|DIR", "on|off"; empty for a flag
  std::string help;                 ///< without the full stop
  std::vector<std::string> values;  ///< the only texts accepted; empty if there are others
  std::vector<std::string> needs;   ///< the names of options that must be given, too
  std::vector<std::string> excludes;
  std::string variable;      ///< the environment variable that replaces it; or empty
  std::string defaultValue;  ///< as shown in help; or empty
  bool isRequired = false;
  bool isRepeated = false;  ///< whether it takes all further arguments

  bool isPositional() const { return names.empty(); }
  bool hasName(std::string_view name) const;
  /// The name in messages: the long name of an option, the placeholder of an argument.
  const std::string& title() const { return names.empty() ? placeholder : names.back(); }
};

/// Options of which the user must give a number.
struct OptionRule {
  std::vector<std::string> titles;
  std::size_t least = 0;
  std::size_t most = 0;  ///< 0: no limit
};

/// A command or a subcommand.
struct CommandRecord {
  std::string name;
  std::string description;  ///< without the full stop
  std::string heading;      ///< under which its parent's page lists it; empty: not listed
  std::vector<OptionRecord> arguments;
  std::vector<OptionRecord> options;
  std::vector<OptionRule> rules;
  std::vector<CommandRecord> commands;
  bool needsCommand = false;  ///< whether one of `commands` must follow

  /// The subcommand with that name; null without a match.
  const CommandRecord* find(std::string_view word) const;
  /// The headings of `commands` in their order.
  std::vector<std::string> headings() const;
  /// The option with that name; null without a match.
  const OptionRecord* option(std::string_view word) const;
};

/// A command with those that contain it, the outermost first. Never empty.
using CommandPath = std::vector<const CommandRecord*>;

/// The path from `root` to the subcommand that `words` name; it ends before a word that names none.
CommandPath pathTo(const CommandRecord& root, std::span<const std::string> words);

/// The words of the command, "tavlen hook add".
std::string wordsOf(const CommandPath& path);

/// The options of the outer commands that the command itself does not redefine.
std::vector<OptionRecord> inheritedOptions(const CommandPath& path);

/// `unknown command "instal"; did you mean "install"?`: `name` is no subcommand of `command`.
std::string unknownCommandText(const std::string& name, const CommandRecord& command);

/// The texts as a list in a sentence: "A, B or C" for the word "or".
std::string listText(const std::vector<std::string>& texts, std::string_view word);

}  // namespace tavlen::cli
