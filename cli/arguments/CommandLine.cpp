#include "cli/arguments/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <map>
#include <span>
#include <string_view>
#include <utility>

#include "cli/arguments/UsageError.h"
#include "cli/arguments/detail/ParserErrors.h"
#include "cli/arguments/detail/ParserRecords.h"
#include "cli/help/HelpPage.h"
#include "cli/terminal/Color.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/Diagnostic.h"
#include "cli/terminal/ShownText.h"
#include "tavlen/foundation/text/Suggestion.h"
#include "tavlen/foundation/text/Unicode.h"

namespace tavlen::cli {

namespace {

constexpr int kUsage = 2;
/// The heading of subcommands for which there was no listUnder().
constexpr const char* kCommands = "Commands";

/// Obeys --json and --color, wherever they are: errors of wrong usage are written in the same form.
void useFormOf(std::span<const std::string> words) {
  static const std::map<std::string, ColorUse, std::less<>> uses = {
      {"auto", ColorUse::automatic}, {"always", ColorUse::always}, {"never", ColorUse::never}};
  constexpr std::string_view kColor = "--color=";
  for (std::size_t i = 0; i < words.size() && words[i] != "--"; ++i) {
    if (words[i] == "--json") useJSONMessages();
    std::string_view use;
    if (words[i].starts_with(kColor)) use = std::string_view(words[i]).substr(kColor.size());
    if (words[i] == "--color" && i + 1 < words.size()) use = words[i + 1];
    // A subcommand may have an option of that name for something else.
    if (const auto found = uses.find(use); found != uses.end()) useColor(found->second);
  }
}

/// The words that lead to the command that the user chose.
CommandPath chosenRecords(const CommandRecord& record, const CLI::App& app) {
  std::vector<std::string> words;
  for (const CLI::App* command : chosenPath(app)) words.push_back(command->get_name());
  return pathTo(record, std::span(words).subspan(1));
}

}  // namespace

Option Option::required() {
  option_->required();
  return *this;
}

Option Option::optional() {
  option_->required(false);
  return *this;
}

Option Option::typeName(const char* name) {
  option_->type_name(name);
  return *this;
}

Option Option::showsDefault() {
  option_->capture_default_str();
  return *this;
}

Option Option::environmentVariable(const char* name) {
  option_->envname(name);
  return *this;
}

Option Option::notEmpty() {
  return check([](const std::string& text) { return text.empty() ? "it is empty" : ""; });
}

Option Option::utf8() {
  return check([](const std::string& text) { return isValidUTF8(text) ? "" : "it is not UTF-8"; });
}

Option Option::check(std::function<std::string(const std::string&)> problem) {
  const auto checked = [problem = std::move(problem), option = option_](const std::string& text) {
    std::string found = problem(text);
    if (!found.empty()) throw UsageError(titleOf(*option), found);
    return found;
  };
  option_->check(CLI::Validator(checked, ""));
  return *this;
}

Option Option::oneOf(std::vector<std::string> texts) {
  state_->values[option_] = texts;
  return check([texts = std::move(texts)](const std::string& text) -> std::string {
    if (std::find(texts.begin(), texts.end(), text) != texts.end()) return "";
    const std::vector<std::string_view> known(texts.begin(), texts.end());
    return "unknown value \"" + text + "\"" + suggestionText(text, known);
  });
}

Option Option::excludes(Option other) {
  option_->excludes(other.option_);
  return *this;
}

Option Option::needs(Option other) {
  option_->needs(other.option_);
  return *this;
}

bool Option::isGiven() const { return option_->count() > 0; }

void Option::requireGiven() const {
  if (!isGiven()) throw UsageError(titleOf(*option_) + " is missing");
}

Command Command::addCommand(const std::string& name, const std::string& description) {
  CLI::App& command = *app_->add_subcommand(name, description);
  command.group(kCommands);
  return {command, *state_};
}

void Command::listUnder(const char* heading) {
  for (CLI::App* command : app_->get_subcommands({})) {
    if (command->get_group() == kCommands) command->group(heading);
  }
}

void Command::hide() { app_->group(""); }

CommandRecord Command::record() const { return recordOf(*app_, *state_); }

void Command::requireCommand() { app_->require_subcommand(1); }

bool Command::hasChosenCommand() const { return !app_->get_subcommands().empty(); }

Command Command::addGroup(const char* name, const char* description, std::size_t least,
                          std::size_t most) {
  CLI::App& group = *app_->add_option_group(name, description);
  group.require_option(least, most);
  return {group, *state_};
}

Option Command::added(CLI::Option* option) const {
  option->transform(CLI::Validator(
      [](std::string& text) {
        text = unmarked(std::move(text));
        return std::string();
      },
      ""));
  return {*option, *state_};
}

Option Command::flag(const char* name, bool& isGiven, const char* help) {
  return {*app_->add_flag(name, isGiven, help)->disable_flag_override(), *state_};
}

Option Command::text(const char* name, std::string& value, const std::string& help) {
  return added(app_->add_option(name, value, help));
}

Option Command::text(const char* name, std::optional<std::string>& value, const std::string& help) {
  return added(app_->add_option(name, value, help));
}

Option Command::text(const char* name, const std::function<void(const std::string&)>& store,
                     const std::string& help) {
  return added(app_->add_option_function<std::string>(name, store, help));
}

Option Command::repeated(const char* name, std::vector<std::string>& values,
                         const std::string& help) {
  return added(app_->add_option(name, values, help)
                   ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
                   ->expected(1)
                   ->allow_extra_args(false));
}

Option Command::number(const char* name, std::optional<std::uint32_t>& value,
                       const std::string& help) {
  return number(
      name, [&value](std::uint32_t number) { value = number; }, help);
}

Option Command::number(const char* name, const std::function<void(std::uint32_t)>& store,
                       const std::string& help) {
  const auto numberOf = [](const std::string& text) -> std::optional<std::uint32_t> {
    std::uint32_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [last, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || last != end) return std::nullopt;
    return number;
  };
  return text(
             name, [=](const std::string& text) { store(*numberOf(text)); }, help)
      .check([=](const std::string& text) {
        return numberOf(text) ? "" : "expected a whole number up to 4294967295: " + text;
      });
}

Option Command::texts(const char* name, std::vector<std::string>& values, const std::string& help) {
  constexpr int kEndless = CLI::detail::expected_max_vector_size;
  // If an option may have more values than it expects, the parser reads "[4i]" as a list of one
  // item. So the option expects more values than possible. With TakeAll, fewer values are not an
  // error.
  return added(app_->add_option(name, values, help)
                   ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
                   ->expected(kEndless - 1, kEndless)
                   ->allow_extra_args(false)
                   ->required());
}

void Command::run(Action action) {
  prepare([action = std::move(action)] { return action; });
}

void Command::prepare(std::function<Action()> prepare) {
  app_->callback([prepare = std::move(prepare), state = state_] {
    if (Action action = prepare()) state->chosen = std::move(action);
  });
}

void Command::answer(std::function<std::string()> text) {
  app_->callback([text = std::move(text), state = state_] { state->answer = text(); });
}

CommandLine::CommandLine(const char* name, const char* description, const char* version)
    : app_(std::make_unique<CLI::App>(description, name)), state_(std::make_unique<ParserState>()) {
  app_->set_help_flag("-h,--help", "Print help");
  app_->set_version_flag("--version", version, "Print the version");
  app_->require_subcommand(1);
  app_->fallthrough();
}

CommandLine::~CommandLine() = default;

Command CommandLine::command() { return {*app_, *state_}; }

std::optional<int> CommandLine::parse(int argc, const char* const* argv) {
  const std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
  useFormOf(words);
  const CommandRecord record = recordOf(*app_, *state_);
  if (words.empty()) {
    printData(helpPage({&record}));
    return 0;
  }
  try {
    std::vector<std::string> reversed;  // as the parser wants them
    std::transform(words.rbegin(), words.rend(), std::back_inserter(reversed), marked);
    app_->parse(std::move(reversed));
    refuseStrayArguments(*app_, words);
  } catch (const CLI::CallForHelp&) {
    printData(helpPage(chosenRecords(record, *app_)));
    return 0;
  } catch (const CLI::CallForVersion& version) {
    printData(version.what() + std::string("\n"));
    return 0;
  } catch (const CLI::ParseError& error) {
    return report(usageError(*app_, *state_, words, error));
  } catch (const UsageError& error) {
    return report(error);
  }
  if (!state_->answer) return std::nullopt;
  printData(*state_->answer);
  return 0;
}

int CommandLine::report(const UsageError& error) const {
  printError(errorText(error));
  const CommandRecord record = recordOf(*app_, *state_);
  std::string words = error.command().value_or(wordsOf(chosenRecords(record, *app_)));
  const std::string help = app_->get_name() + " help";
  if (words != help) words.replace(0, app_->get_name().size(), help);
  printNote("see \"" + words + "\"");
  return kUsage;
}

int CommandLine::run() const { return state_->chosen(); }

}  // namespace tavlen::cli
