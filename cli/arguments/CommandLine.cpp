#include "cli/arguments/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <iostream>
#include <string_view>
#include <system_error>
#include <utility>

#include "cli/arguments/UsageError.h"
#include "cli/terminal/Diagnostic.h"
#include "cli/terminal/ShownText.h"
#include "tavlen/foundation/text/Unicode.h"

namespace tavlen::cli {

namespace {

constexpr int kUsage = 2;

/// Prints an error, or help if the user asked for it. Returns the exit status.
int report(const CLI::App& app, const CLI::ParseError& error) {
  const std::vector<std::string> unknown = app.remaining(true);
  // The parser reports a missing argument first; but if a word is unknown, that is the likely
  // cause.
  const bool isMistyped = dynamic_cast<const CLI::RequiredError*>(&error) && !unknown.empty();
  const int status = isMistyped ? app.exit(CLI::ExtrasError(unknown)) : app.exit(error);
  if (!std::cout.flush()) {
    throw std::system_error(errno, std::generic_category(), "standard output");
  }
  return status == 0 ? 0 : kUsage;
}

/// The text for the standard error stream after wrong usage.
std::string shownUsageError(const std::string& message) {
  if (hasJSONMessages()) return shownMessage({Diagnostic::kError, message});
  return shownLine(message) + "\nRun with --help for more information.\n";
}

}  // namespace

Option Option::required() {
  option_->required();
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
  option_->check(CLI::Validator(std::move(problem), ""));
  return *this;
}

Option Option::transform(std::function<void(std::string&)> change) {
  const auto validator = [change = std::move(change)](std::string& text) {
    change(text);
    return std::string();
  };
  option_->transform(CLI::Validator(validator, ""));
  return *this;
}

Option Option::oneOf(std::vector<std::string> texts) {
  option_->check(CLI::IsMember(std::move(texts)));
  return *this;
}

Option Option::oneOfIgnoringCase(std::vector<std::string> texts) {
  option_->transform(CLI::IsMember(std::move(texts), CLI::ignore_case));
  return *this;
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
  if (!isGiven()) throw CLI::RequiredError(option_->get_name());
}

Command Command::addCommand(const std::string& name, const std::string& description) {
  return {*app_->add_subcommand(name, description), *chosen_};
}

void Command::requireCommand() { app_->require_subcommand(1); }

bool Command::hasChosenCommand() const { return !app_->get_subcommands().empty(); }

Command Command::addGroup(const char* name, const char* description, std::size_t least,
                          std::size_t most) {
  CLI::App& group = *app_->add_option_group(name, description);
  group.require_option(least, most);
  return {group, *chosen_};
}

Option Command::flag(const char* name, bool& isGiven, const char* help) {
  return Option(*app_->add_flag(name, isGiven, help));
}

Option Command::text(const char* name, std::string& value, const std::string& help) {
  return Option(*app_->add_option(name, value, help));
}

Option Command::text(const char* name, std::optional<std::string>& value, const std::string& help) {
  return Option(*app_->add_option(name, value, help));
}

Option Command::text(const char* name, const std::function<void(const std::string&)>& store,
                     const std::string& help) {
  return Option(*app_->add_option_function<std::string>(name, store, help));
}

Option Command::repeated(const char* name, std::vector<std::string>& values,
                         const std::string& help) {
  return Option(*app_->add_option(name, values, help)
                     ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
                     ->expected(1)
                     ->allow_extra_args(false));
}

Option Command::number(const char* name, std::optional<std::uint32_t>& value,
                       const std::string& help) {
  return Option(*app_->add_option(name, value, help));
}

Option Command::number(const char* name, const std::function<void(std::uint32_t)>& store,
                       const std::string& help) {
  return Option(*app_->add_option_function<std::uint32_t>(name, store, help));
}

Option Command::texts(const char* name, std::vector<std::string>& values, const std::string& help) {
  constexpr int kEndless = CLI::detail::expected_max_vector_size;
  // If an option may have more values than it expects, the parser reads "[4i]" as a list of one
  // item. So the option expects more values than possible. With TakeAll, fewer values are not an
  // error.
  return Option(*app_->add_option(name, values, help)
                     ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
                     ->expected(kEndless - 1, kEndless)
                     ->allow_extra_args(false)
                     ->required()
                     ->option_text("TEXT ... REQUIRED"));
}

void Command::run(Action action) {
  prepare([action = std::move(action)] { return action; });
}

void Command::prepare(std::function<Action()> prepare) {
  app_->callback([prepare = std::move(prepare), chosen = chosen_] {
    if (Action action = prepare()) *chosen = std::move(action);
  });
}

void refuseUnexpected(const std::string& word) {
  throw CLI::ExtrasError(std::vector<std::string>{word});
}

CommandLine::CommandLine(const char* name, const char* description, const char* version)
    : app_(std::make_unique<CLI::App>(description, name)) {
  app_->set_version_flag("--version", version);
  app_->require_subcommand(1);
  app_->fallthrough();
  app_->failure_message(
      [](const CLI::App*, const CLI::Error& error) { return shownUsageError(error.what()); });
}

CommandLine::~CommandLine() = default;

Command CommandLine::command() { return {*app_, chosen_}; }

std::optional<int> CommandLine::parse(int argc, const char* const* argv) {
  // Before parsing, so that errors of wrong usage are written in the same form.
  const std::vector<std::string_view> words(argv, argv + argc);
  const auto end = std::find(words.begin(), words.end(), "--");
  if (std::find(words.begin(), end, "--json") != end) useJSONMessages();
  try {
    app_->parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return report(*app_, error);
  } catch (const UsageError& error) {
    return report(*app_, CLI::ValidationError(errorText(error)));
  }
  return std::nullopt;
}

int CommandLine::run() const { return chosen_(); }

}  // namespace tavlen::cli
