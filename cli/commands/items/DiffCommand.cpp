#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "cli/commands/Commands.h"
#include "cli/process/ErrorReport.h"
#include "cli/tweaks/TweakContents.h"
#include "cli/tweaks/TweakForReading.h"

namespace tavlen::cli {

namespace {

// As those of diff(1).
constexpr int kDifferent = 1;
constexpr int kTrouble = 2;

struct Options {
  std::string before;
  std::string after;
  bool json = false;
};

int diff(const Options& options) {
  try {
    const TweakContents before = contentsOf(tweakForReading(options.before));
    const TweakContents after = contentsOf(tweakForReading(options.after));
    const std::vector<TweakChange> changes = changesBetween(before, after);
    printChanges(changes, options.json);
    return changes.empty() ? 0 : kDifferent;
  } catch (const std::exception& error) {
    reportError(error);
    return kTrouble;
  }
}

}  // namespace

void addDiffCommand(Command app) {
  Command command = app.addCommand(
      "diff", "Print what differs between two tweaks; the exit status is 1 if something does");
  const auto options = std::make_shared<Options>();
  command.text("BEFORE", options->before, kReadTweakHelp).required().notEmpty();
  command.text("AFTER", options->after, "The other tweak, in any of these forms")
      .required()
      .notEmpty();
  command.flag("--json", options->json, "Print a JSON array");
  command.run([options] { return diff(*options); });
}

}  // namespace tavlen::cli
