#include <charconv>
#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>

#include "cli/arguments/TranspilerOption.h"
#include "cli/commands/Commands.h"
#include "cli/terminal/CaretLine.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/ShownText.h"
#include "cli/tweaks/TextInput.h"
#include "cli/tweaks/Transpilation.h"
#include "cli/tweaks/TweakForReading.h"
#include "tavlen/tweaks/SourceMap.h"

namespace tavlen::cli {

namespace {

struct Options {
  std::string tweak;
  std::string place;
  std::string transpiler;
  bool json = false;
};

/// The JSON output.
struct Location {
  std::string file;
  std::optional<std::uint64_t> line;
  std::optional<std::uint64_t> column;
  std::optional<std::string> place;
  std::optional<std::string> hook;

  static constexpr auto codedFields() {
    return std::tuple{
        requiredField("file", &Location::file), optionalField("line", &Location::line),
        optionalField("column", &Location::column), optionalField("place", &Location::place),
        optionalField("hook", &Location::hook)};
  }
};

/// A number from 1; nothing for any other text.
std::optional<std::size_t> numberFrom(std::string_view text) {
  std::size_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || value == 0) return std::nullopt;
  return value;
}

std::optional<TextPosition> placeFrom(std::string_view text) {
  const std::size_t colon = text.find(':');
  if (colon == std::string_view::npos) return std::nullopt;
  const auto line = numberFrom(text.substr(0, colon));
  const auto column = numberFrom(text.substr(colon + 1));
  if (!line || !column) return std::nullopt;
  return TextPosition{*line, *column};
}

/// The place in the text of `source` that `place` in the code came from. Throws
/// std::runtime_error for a place without one.
TextPosition sourcePlace(const Options& options, const TweakProcessor::Output& output,
                         TextPosition place) {
  const std::string shown = options.tweak + ": " + options.place + ": ";
  if (!offsetAt(output.code, place))
    throw std::runtime_error(shown + "the code has no such line or column");
  try {
    if (const auto found = SourceMap::decoded(output.map).sourceOf(place)) return *found;
  } catch (const DecodingError& error) {
    throw std::runtime_error("the transpiler's source map: " + error.description());
  }
  throw std::runtime_error(shown + "the source map leads to no place in the source");
}

int locate(const Options& options) {
  const OpenedTweak tweak = openTweak(options.tweak);
  const TweakSource source(tweak.manifest.hooks(), tweak.script);
  const auto output =
      transpile(tweak, source, transpilerFolder(options.transpiler), TweakProcessor::Map::make);
  if (!output) {
    printError(tweak.argument + ": does not build");
    return 1;
  }
  const TextPosition place = sourcePlace(options, *output, placeFrom(options.place).value());
  const auto origin = source.placeAt(place);
  if (!origin) {
    throw std::runtime_error(options.tweak + ": " + options.place +
                             ": belongs to no hook and not to the script");
  }
  const auto* hook = std::get_if<TweakSource::HookPlace>(&*origin);
  const auto atHookPlace = [&] {
    const std::size_t offset = offsetAt(source.text(), place).value();
    return atHookText(tweak, hook->hook, offset - source.entryBefore(offset)->begin);
  };
  const Diagnostic found =
      hook != nullptr ? atHookPlace() : atScript(tweak, std::get<TextPosition>(*origin));
  std::optional<std::string> method;
  if (hook != nullptr) method = methodText(tweak.manifest.hooks().at(hook->hook).identity());
  if (options.json) {
    printJSON(Location{found.file.value(), found.line, found.column, found.place, method});
    return 0;
  }
  if (method && tweak.text) {
    // A text has a line of its own for the hook.
    printData(shownLine(placeText(found) + ": " + *method) + "\n" +
              tweak.text->excerptAt({found.line.value(), found.column.value()}));
    return 0;
  }
  printData(shownLine(placeText(found) + (method ? ": " + *method : "")) + "\n" +
            caretLine(lineAt(source.text(), place.line), place.column));
  return 0;
}

}  // namespace

void addLocateCommand(Command app) {
  Command command =
      app.addCommand("locate", "Lead a place in the code back to its hook or script line");
  const auto options = std::make_shared<Options>();
  command.text("TWEAK", options->tweak, kReadTweakHelp).required().notEmpty();
  command
      .text("LINE:COLUMN", options->place,
            "The place in the code that build makes; both numbers count from 1")
      .required()
      .check([](const std::string& text) {
        return placeFrom(text) ? "" : text + ": expected a line and a column, such as 12:7";
      });
  command.flag("--json", options->json,
               "Print a JSON object: the file, the place or the line and column in it, and the "
               "method of a hook");
  addTranspilerOption(command, options->transpiler);
  command.run([options] { return locate(*options); });
}

}  // namespace tavlen::cli
