#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/arguments/TranspilerOption.h"
#include "cli/commands/Commands.h"
#include "cli/terminal/Console.h"
#include "cli/work/ErrorReport.h"
#include "cli/work/Transpilation.h"
#include "cli/work/TweakCheck.h"
#include "cli/work/TweakForReading.h"
#include "tavlen/foundation/text/EscapedText.h"

namespace tavlen::cli {

namespace {

std::string counted(std::size_t warnings) {
  if (warnings == 0) return "ok";
  return std::to_string(warnings) + (warnings == 1 ? " warning" : " warnings");
}

/// The line to print for the tweak `argument`; nothing if it does not build. Errors and warnings go
/// to the standard error stream.
std::optional<std::string> verdictOf(const std::string& argument,
                                     const std::filesystem::path& transpiler) {
  try {
    const OpenedTweak tweak = openTweak(argument);
    const std::vector<Diagnostic> warnings = warningsFor(tweak);
    for (const Diagnostic& warning : warnings) print(warning);
    if (transpile(tweak, transpiler)) {
      return counted(warnings.size() + (tweak.scriptIsUnreadable ? 1 : 0));
    }
    printError(argument + ": does not build");
  } catch (const std::exception& error) {
    reportError(error);
  }
  return std::nullopt;
}

}  // namespace

void addCheckCommand(Command app) {
  Command command = app.addCommand("check", "Report problems in tweaks, and where they are");
  const auto tweaks = std::make_shared<std::vector<std::string>>();
  const auto transpiler = std::make_shared<std::string>();
  command.texts("TWEAK", *tweaks, "The tweaks: their identifiers, names or paths").notEmpty();
  addTranspilerOption(command, *transpiler);
  command.run([tweaks, transpiler] {
    bool allBuild = true;
    for (const std::string& tweak : *tweaks) {
      const auto verdict = verdictOf(tweak, transpilerFolder(*transpiler));
      if (verdict) printData(escapedForTerminal(tweak) + ": " + *verdict + "\n");
      allBuild = allBuild && verdict.has_value();
    }
    return allBuild ? 0 : 1;
  });
}

}  // namespace tavlen::cli
