#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

#include "cli/arguments/TranspilerOption.h"
#include "cli/commands/Commands.h"
#include "cli/process/ProgramFolders.h"
#include "cli/process/TriedProgram.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/ShownText.h"
#include "cli/tweaks/OverriddenInfo.h"
#include "cli/tweaks/TemporaryTweak.h"
#include "cli/tweaks/Transpilation.h"
#include "cli/tweaks/TweakCheck.h"
#include "cli/tweaks/TweakForReading.h"
#include "tavlen/device/InfoPlist.h"
#include "tavlen/device/TweakInfo.h"
#include "tavlen/foundation/files/DescriptorSnapshot.h"
#include "tavlen/foundation/files/FileReplacement.h"
#include "tavlen/tweaks/TweakPackaging.h"

namespace tavlen::cli {

namespace {

namespace fs = std::filesystem;

struct Options {
  std::string tweak;
  std::vector<std::string> program;
  std::string transpiler;
  std::optional<std::uint32_t> limit;
  bool isTraced = false;
  bool json = false;
};

/// The JSON output: an event, with its place in the tweak.
struct TriedEvent {
  std::string event;
  std::optional<std::string> method;
  std::optional<std::string> message;
  std::optional<std::string> file;
  std::optional<std::uint64_t> line;
  std::optional<std::uint64_t> column;
  std::optional<std::string> place;
  std::optional<std::string> receiver;
  std::optional<std::vector<std::string>> arguments;
  std::optional<std::string> result;
  std::optional<double> microseconds;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("event", &TriedEvent::event),
                      optionalField("method", &TriedEvent::method),
                      optionalField("message", &TriedEvent::message),
                      optionalField("file", &TriedEvent::file),
                      optionalField("line", &TriedEvent::line),
                      optionalField("column", &TriedEvent::column),
                      optionalField("place", &TriedEvent::place),
                      optionalField("receiver", &TriedEvent::receiver),
                      optionalField("arguments", &TriedEvent::arguments),
                      optionalField("result", &TriedEvent::result),
                      optionalField("microseconds", &TriedEvent::microseconds)};
  }
};

/// "-[A b:] of <A 0x1>, @"text" -> 5, 3.2 us"
std::string callText(const LoaderEvent& event) {
  std::string text = event.method.value_or("") + " of " + event.receiver.value_or("");
  for (const std::string& argument : event.arguments.value_or(std::vector<std::string>()))
    text += ", " + argument;
  if (event.result) text += " -> " + *event.result;
  if (event.message) text += " " + *event.message;
  constexpr double kTenths = 10;
  constexpr double kMost = 1e15;  // the program may send any number
  const double microseconds = std::clamp(event.microseconds.value_or(0), 0.0, kMost);
  const auto tenths = static_cast<std::uint64_t>(microseconds * kTenths);
  return text + "; " + std::to_string(tenths / 10) + '.' + std::to_string(tenths % 10) + " us";
}

/// Prints what the loader reports, with places in the tweak. Remembers whether it has started.
class EventPrinter {
 public:
  EventPrinter(const OpenedTweak& tweak, bool isJSON)
      : tweak_(tweak), source_(tweak.manifest.hooks(), tweak.script), isJSON_(isJSON) {}

  void receive(const LoaderEvent& event) {
    if (event.event == LoaderEvent::kStarted) hasStarted_ = true;
    if (isJSON_) {
      printAsJSON(event);
    } else if (event.event != LoaderEvent::kStarted) {
      printAsText(event);
    }
  }
  bool hasStarted() const { return hasStarted_; }

 private:
  /// Where the event comes from: the place in the source, otherwise the hook of the method.
  Diagnostic whereOf(const LoaderEvent& event) const {
    if (event.line && event.column) {
      const auto place = source_.placeAt(
          {static_cast<std::size_t>(*event.line), static_cast<std::size_t>(*event.column)});
      if (place && std::holds_alternative<TextPosition>(*place))
        return atScript(tweak_, std::get<TextPosition>(*place));
      if (place) return atHook(tweak_, std::get<TweakSource::HookPlace>(*place).hook);
    }
    Diagnostic where;
    where.file = tweak_.argument;
    return where;
  }

  void printAsText(const LoaderEvent& event) const {
    if (event.event == LoaderEvent::kHooked)
      return printNote("hooked " + event.method.value_or(""));
    if (event.event == LoaderEvent::kCall) return printNote(callText(event));
    Diagnostic message = whereOf(event);
    message.severity =
        event.event == LoaderEvent::kMistake ? Diagnostic::kError : Diagnostic::kWarning;
    message.message = event.message.value_or("");
    if (event.method) message.message = *event.method + ": " + message.message;
    if (event.event == LoaderEvent::kRefused) message.message = "not hooked: " + message.message;
    if (event.event == LoaderEvent::kWaiting)
      message.message = "not hooked yet: " + message.message;
    print(message);
  }

  void printAsJSON(const LoaderEvent& event) const {
    const Diagnostic where = event.line ? wellFormed(whereOf(event)) : Diagnostic();
    const TriedEvent shown{event.event,     event.method, event.message,     where.file,
                           where.line,      where.column, where.place,       event.receiver,
                           event.arguments, event.result, event.microseconds};
    printMessage(shownJSON(shown) + "\n");
  }

  const OpenedTweak& tweak_;
  TweakSource source_;
  bool isJSON_;
  bool hasStarted_ = false;
};

/// Makes the package in `folder`, with the overrides alone as its Info.plist. Returns its path;
/// nothing after a syntax error, which is reported.
std::optional<fs::path> packaged(const OpenedTweak& tweak, const fs::path& transpiler,
                                 const fs::path& folder) {
  const TweakFile::Manifest& manifest = tweak.manifest;
  TweakInfo record(manifest.configuration.bundleID, tweak.file->id());
  try {
    packageTweak(tweak.opened(), Info(), {folder, transpiler, false}, record);
  } catch (const TweakProcessor::Error&) {
    if (transpile(tweak, transpiler, TweakProcessor::Map::leaveOut)) throw;
    printError(tweak.argument + ": does not build");
    return std::nullopt;
  }
  const fs::path package = fs::directory_iterator(folder)->path();
  replaceFile(package / kInfoPlistFilename, overriddenInfo(manifest));
  return package;
}

int tryTweak(const Options& options) {
  constexpr std::uint32_t kDefaultLimit = 5000;
  const DescriptorSnapshot callers;  // before the engine opens its own
  const OpenedTweak tweak = openTweak(options.tweak);
  const fs::path program = programNamed(options.program.front());
  printWarnings(tweak);
  const TemporaryTweak folder;
  const auto package = packaged(tweak, transpilerFolder(options.transpiler), folder.path());
  if (!package) return 1;
  EventPrinter printer(tweak, options.json);
  const std::chrono::milliseconds limit(options.limit.value_or(kDefaultLimit));
  callers.hideOthers();
  const int status = runTried({program, options.program, *package, limit, options.isTraced},
                              [&](const LoaderEvent& event) { printer.receive(event); });
  if (!printer.hasStarted()) {
    printWarning(options.program.front() +
                 ": ran without the tweak: it is a script, or linked statically, or runs with "
                 "another user's rights");
  }
  return status;
}

}  // namespace

void addTryCommand(Command app) {
  Command command =
      app.addCommand("try", "Run an Objective-C program on this machine with a tweak in it");
  const auto options = std::make_shared<Options>();
  command.text("TWEAK", options->tweak, kReadTweakHelp).required().notEmpty();
  command.texts("PROGRAM", options->program, "The program and its arguments, after a --");
  command.flag("--trace", options->isTraced,
               "Report each hooked call with its arguments, its result and its time");
  command
      .number("--limit", options->limit,
              "Name hooks that compute for longer than this; 5000 without it")
      .typeName("MILLISECONDS");
  command.flag("--json", options->json,
               "Print each event as a JSON object on a line of the standard error stream");
  addTranspilerOption(command, options->transpiler);
  command.run([options] { return tryTweak(*options); });
}

}  // namespace tavlen::cli
