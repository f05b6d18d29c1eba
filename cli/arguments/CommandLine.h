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

struct CommandRecord;
struct ParserState;
class UsageError;

/// The work of a subcommand. Returns the process's exit status; main() reports exceptions.
using Action = std::function<int()>;

/// An option, a flag or a positional argument of a Command: a copyable handle, valid as long as the
/// CommandLine. The setters return the handle for chaining. CommandLine::parse() applies them and
/// reports violations as wrong usage.
class Option {
 public:
  /// Wraps an option of the parser's.
  Option(CLI::Option& option, ParserState& state) : option_(&option), state_(&state) {}

  /// Makes the option mandatory.
  Option required();
  /// Makes an argument of Command::texts() optional.
  Option optional();
  /// Sets the placeholder for the value in help. It also tells completion what the value is: see
  /// CompletedWord.h.
  Option typeName(const char* name);
  /// Shows the variable's current value in help as the default.
  Option showsDefault();
  /// Takes the value from the environment variable `name` if the option is not given.
  Option environmentVariable(const char* name);

  /// Refuses an empty text. It usually comes from an unset shell variable, and as a path it would
  /// mean the current folder.
  Option notEmpty();
  /// Refuses text that is not UTF-8, because documents cannot contain it.
  Option utf8();
  /// Refuses a text for which `problem` returns a message. An empty message accepts the text.
  Option check(std::function<std::string(const std::string& text)> problem);
  /// Accepts only `texts`, which help lists.
  Option oneOf(std::vector<std::string> texts);

  /// Refuses the option together with `other`.
  Option excludes(Option other);
  /// Refuses the option without `other`.
  Option needs(Option other);

  /// Whether the user gave the option. Call it after parsing.
  bool isGiven() const;
  /// For an argument that is required only in some cases: throws UsageError unless it was
  /// given.
  void requireGiven() const;

 private:
  CLI::Option* option_;
  ParserState* state_;
};

/// A subcommand, a group of options, or the whole command: a handle like Option. A name that begins
/// with a dash, such as "-f,--force", adds an option; any other name adds a positional argument.
/// Parsing stores values in the variables, which must live until the CommandLine has run.
class Command {
 public:
  /// Wraps a command of the parser's.
  Command(CLI::App& app, ParserState& state) : app_(&app), state_(&state) {}

  /// Adds a subcommand with a description for help.
  Command addCommand(const std::string& name, const std::string& description);
  /// Lists the subcommands added since the last call under `heading` in help.
  void listUnder(const char* heading);
  /// Leaves it out of help.
  void hide();
  /// The command with its subcommands as plain data.
  CommandRecord record() const;
  /// Requires exactly one of its subcommands.
  void requireCommand();
  /// Whether the user chose one of its subcommands. For use in prepare().
  bool hasChosenCommand() const;

  /// Adds a group of options, which has its own heading in help. The user must give at least
  /// `least` and at most `most` of them; 0 for `most` means no limit.
  Command addGroup(const char* name, const char* description, std::size_t least, std::size_t most);

  /// Adds an option without a value. `isGiven` becomes true if it is given.
  Option flag(const char* name, bool& isGiven, const char* help);
  /// Adds an option with a text, which is stored unchanged. If it is not given, `value` keeps its
  /// value.
  Option text(const char* name, std::string& value, const std::string& help);
  /// The same for a variable that shows whether the option was given.
  Option text(const char* name, std::optional<std::string>& value, const std::string& help);
  /// Adds an option whose text is passed to `store`, which may throw UsageError.
  Option text(const char* name, const std::function<void(const std::string& value)>& store,
              const std::string& help);
  /// Adds an option that may be given several times; each text is stored unchanged.
  Option repeated(const char* name, std::vector<std::string>& values, const std::string& help);
  /// Adds an option with a whole number from 0 to 2^32 - 1.
  Option number(const char* name, std::optional<std::uint32_t>& value, const std::string& help);
  /// Adds an option whose whole number from 0 to 2^32 - 1 is passed to `store`.
  Option number(const char* name, const std::function<void(std::uint32_t value)>& store,
                const std::string& help);
  /// Adds one or more positional arguments, each stored unchanged, even if in square brackets.
  Option texts(const char* name, std::vector<std::string>& values, const std::string& help);

  /// Sets the action of this subcommand.
  void run(Action action);
  /// Sets a function that returns the text that this subcommand prints. CommandLine::parse() calls
  /// it, so it must not depend on options of the whole command. It may throw UsageError.
  void answer(std::function<std::string()> text);
  /// Sets a function that checks the arguments and returns the action. It may throw UsageError. It
  /// returns an empty action if a subcommand has set one.
  void prepare(std::function<Action()> prepare);

 private:
  Option added(CLI::Option* option) const;

  CLI::App* app_;
  ParserState* state_;
};

/// The parser of the process's arguments. Neither it nor its handles are thread-safe.
class CommandLine {
 public:
  /// The texts appear in help and as the answer to `--version`.
  CommandLine(const char* name, const char* description, const char* version);
  ~CommandLine();
  CommandLine(const CommandLine&) = delete;
  CommandLine& operator=(const CommandLine&) = delete;

  /// The command itself. Its options may also follow a subcommand.
  Command command();

  /// Parses the arguments. Returns nothing if an action was chosen. Otherwise prints help or an
  /// error message and returns the process's exit status. An argument that begins like a method,
  /// "-[Class selector]", is no option. Throws std::system_error if it cannot write to the standard
  /// output.
  std::optional<int> parse(int argc, const char* const* argv);
  /// Runs the chosen action and returns its exit status. Call it after parse() returned nothing.
  /// Throws what the action throws.
  int run() const;

 private:
  int report(const UsageError& error) const;

  std::unique_ptr<CLI::App> app_;
  std::unique_ptr<ParserState> state_;
};

}  // namespace tavlen::cli
