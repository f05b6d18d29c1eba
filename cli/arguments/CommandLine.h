#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace tavlen::cli {

/// What a subcommand does, and the process's exit status. An exception is reported by main.
using Action = std::function<int()>;

/// An option, a flag or a positional argument of a Command: a handle, which is copied freely and
/// valid for as long as the CommandLine. The functions that change it return it, to be chained.
/// What they make of the arguments is judged by CommandLine::parse().
class Option {
 public:
  explicit Option(CLI::Option& option) : option_(&option) {}

  /// Leaving it out is wrong usage.
  Option required();
  /// What help shows in place of the value.
  Option typeName(const char* name);
  /// Help shows the value that the variable holds now.
  Option showsDefault();
  /// Where the option is not given, the environment variable `name` stands in for it.
  Option environmentVariable(const char* name);

  /// Refuses an empty text, which an unset variable of a shell leaves there: as a path it would
  /// mean the current folder.
  Option notEmpty();
  /// Refuses what is not UTF-8, which no document can hold.
  Option utf8();
  /// Refuses a text for which `problem` returns one; an empty one accepts it.
  Option check(std::function<std::string(const std::string& text)> problem);
  /// Lets `change` edit the text before it is checked.
  Option transform(std::function<void(std::string& text)> change);
  /// Refuses any other text; help lists these.
  Option oneOf(std::vector<std::string> texts);
  /// As oneOf(), but stores the spelling of `texts` for any case of letters.
  Option oneOfIgnoringCase(std::vector<std::string> texts);

  /// Refuses both at once.
  Option excludes(Option other);
  /// Refuses it without `other`.
  Option needs(Option other);

  /// After parsing: whether the user gave it.
  bool isGiven() const;
  /// For an argument that is required in some cases only. Throws an error of wrong usage where it
  /// was not given.
  void requireGiven() const;

 private:
  CLI::Option* option_;
};

/// A subcommand, a group of options, or the whole command: a handle as Option is. A name that
/// begins with a dash makes an option, "-f,--force", any other a positional argument. Parsing
/// stores values in the variables, which must live until the CommandLine has run.
class Command {
 public:
  Command(CLI::App& app, Action& chosen) : app_(&app), chosen_(&chosen) {}

  /// Adds a subcommand; help shows `description` for it.
  Command addCommand(const std::string& name, const std::string& description);
  /// One subcommand must follow.
  void requireCommand();
  /// Whether the user named one of its subcommands; for prepare().
  bool hasChosenCommand() const;

  /// Options under a heading of their own in help, of which the user gives `least` to `most`, or
  /// any number from `least` on where `most` is 0.
  Command addGroup(const char* name, const char* description, std::size_t least, std::size_t most);

  /// An option without a value.
  Option flag(const char* name, bool& isGiven, const char* help);
  /// A text is taken as it stands; without one, the variable stays as it is.
  Option text(const char* name, std::string& value, const std::string& help);
  Option text(const char* name, std::optional<std::string>& value, const std::string& help);
  /// Lets `store` read the value; it may throw UsageError.
  Option text(const char* name, const std::function<void(const std::string& value)>& store,
              const std::string& help);
  /// Refuses what is no whole number from 0 to 2^32 - 1.
  Option number(const char* name, std::optional<std::uint32_t>& value, const std::string& help);
  /// One or more positional arguments, each as it stands, also one in square brackets.
  Option texts(const char* name, std::vector<std::string>& values, const std::string& help);

  /// What is done where the user chose this subcommand.
  void run(Action action);
  /// As run(), of arguments that are judged first: `prepare` may throw UsageError. An empty action
  /// leaves the choice to a subcommand.
  void prepare(std::function<Action()> prepare);

 private:
  CLI::App* app_;
  Action* chosen_;
};

/// Throws the error for a word that no argument takes.
[[noreturn]] void refuseUnexpected(const std::string& word);

/// The arguments of the process. Not thread-safe, as its handles are not.
class CommandLine {
 public:
  CommandLine(const char* name, const char* description, const char* version);
  ~CommandLine();
  CommandLine(const CommandLine&) = delete;
  CommandLine& operator=(const CommandLine&) = delete;

  /// The command itself. Its options may stand after a subcommand, too.
  Command command();

  /// Returns nothing once an action is chosen. Otherwise prints the help that was asked for, or
  /// what is wrong with the arguments, and returns the process's exit status. Throws
  /// std::system_error where the standard output takes nothing.
  std::optional<int> parse(int argc, const char* const* argv);
  /// Does what the user chose; to be called after parse() returned nothing. Throws what that does.
  int run() const;

 private:
  std::unique_ptr<CLI::App> app_;
  Action chosen_;
};

}  // namespace tavlen::cli
