#include <cstddef>
#include <exception>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "cli/arguments/AppArgument.h"
#include "cli/arguments/ImageArgument.h"
#include "cli/arguments/StoredItem.h"
#include "cli/arguments/TranspilerOption.h"
#include "cli/classes/ClassCheck.h"
#include "cli/commands/Commands.h"
#include "cli/process/ErrorReport.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/CountText.h"
#include "cli/terminal/PlacedError.h"
#include "cli/terminal/ReportedError.h"
#include "cli/terminal/ShownText.h"
#include "cli/tweaks/Transpilation.h"
#include "cli/tweaks/TweakCheck.h"
#include "cli/tweaks/TweakForReading.h"
#include "tavlen/foundation/text/EscapedText.h"

namespace tavlen::cli {

namespace {

struct Options {
  std::vector<std::string> tweaks;
  std::string transpiler;
  ImageArgument image;
  bool hasClasses = false;
  bool isStrict = false;
  bool json = false;
};

/// Checks tweaks one after another. Whatever is said of them passes through here.
class Check {
 public:
  explicit Check(const Options& options) : options_(options) {}

  int run() {
    const MessageReceiver receiver([this](const Diagnostic& message) { take(message); });
    bool isGood = true;
    for (const std::string& tweak : options_.tweaks) isGood = check(tweak) && isGood;
    if (options_.json) printJSON(messages_);
    return isGood ? 0 : 1;
  }

 private:
  /// For messages without a rule.
  static constexpr const char* kOtherCode = "other";

  void take(Diagnostic message) {
    if (!message.code) message.code = kOtherCode;
    if (message.severity == Diagnostic::kWarning) ++warnings_;
    if (message.severity == Diagnostic::kError) ++errors_;
    if (options_.json) {
      messages_.push_back(wellFormed(message));
    } else {
      printMessage(shownMessage(message));
    }
  }

  /// Returns whether the tweak passes.
  bool check(const std::string& argument) {
    warnings_ = 0;
    errors_ = 0;
    bool builds = false;
    try {
      const OpenedTweak tweak = opened(argument);
      printWarnings(tweak);
      if (options_.hasClasses || !options_.image.image.empty()) checkClasses(tweak);
      builds =
          transpile(tweak, transpilerFolder(options_.transpiler), TweakProcessor::Map::leaveOut)
              .has_value();
      if (!builds && !options_.json) printError(argument + ": does not build");
    } catch (const std::exception& error) {
      reportError(error);
    }
    if (!builds || errors_ != 0) return false;
    if (!options_.json) {
      printData(escapedForTerminal(argument) + ": " +
                (warnings_ == 0 ? "ok" : countText(warnings_, "warning", "warnings")) + "\n");
    }
    return warnings_ == 0 || !options_.isStrict;
  }

  /// As openTweak(). For programs, an error that begins with the path that the user wrote becomes
  /// one of that file.
  OpenedTweak opened(const std::string& argument) const {
    try {
      return openTweak(argument);
    } catch (const PlacedError&) {
      throw;
    } catch (const ReportedError&) {
      throw;
    } catch (const std::exception& error) {
      if (!options_.json || !isItemPath(argument) || !errorText(error).starts_with(argument + ": "))
        throw;
      throw fileError(argument, error, kUnreadableTweakCode);
    }
  }

  /// Without the classes, the other checks go on.
  void checkClasses(const OpenedTweak& tweak) {
    try {
      const ClassDump& dump = classesFor(tweak.manifest.configuration.bundleID);
      for (const Diagnostic& warning : warningsFrom(classProblemsOf(tweak.manifest, dump), tweak))
        print(warning);
    } catch (const ReportedError&) {
      return;
    } catch (const std::exception& error) {
      TweakProblem problem;
      problem.subject = TweakProblem::Subject::app;
      problem.code = "unreadable-classes";
      problem.text = errorText(error);
      Diagnostic message = warningsFrom({problem}, tweak).front();
      message.severity = Diagnostic::kError;
      print(message);
    }
  }

  /// The classes of the images that the user named, or else of the app, which are read once.
  const ClassDump& classesFor(const std::string& bundleID) {
    ImageArgument image = options_.image;
    // By the path of an app of the device: the identifier in a tweak from elsewhere must not name a
    // file to load.
    if (image.image.empty()) image.image = appWithBundleID(bundleID)->appDir().string();
    const auto known = dumps_.find(image.image);
    if (known != dumps_.end()) return known->second;
    ClassDump dump = dumpClasses(image);
    reportFaults(dump, image);
    return dumps_.emplace(image.image, std::move(dump)).first->second;
  }

  const Options& options_;
  std::map<std::string, ClassDump> dumps_;
  std::vector<Diagnostic> messages_;  ///< those to print as JSON
  std::size_t warnings_ = 0;          ///< of the tweak, as the errors
  std::size_t errors_ = 0;
};

}  // namespace

void addCheckCommand(Command app) {
  Command command = app.addCommand("check", "Report problems in tweaks, and where they are");
  const auto options = std::make_shared<Options>();
  command
      .texts(
          "TWEAK", options->tweaks,
          "The tweaks: their identifiers, names, or the paths of their folders, documents, texts "
          "(tweak.toml) or archives; - for a text on the standard input")
      .notEmpty();
  command.flag("--strict", options->isStrict, "Fail if there are warnings, too");
  command.flag("--classes", options->hasClasses,
               "Also look the hooked methods up in the classes of the tweak's app");
  const ImageOptions images = addImageArgument(command, "--in", options->image);
  for (Option other : images.others) other.needs(images.image);
  command.flag("--json", options->json,
               "Print a JSON array of the messages, each with file, line, column, place, severity, "
               "code and message");
  addTranspilerOption(command, options->transpiler);
  command.run([options] { return Check(*options).run(); });
}

}  // namespace tavlen::cli
