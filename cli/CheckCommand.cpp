#include <CLI/CLI.hpp>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/ErrorReport.h"
#include "cli/Transpilation.h"
#include "cli/TranspilerOption.h"
#include "cli/TweakArgument.h"
#include "cli/TweakCheck.h"

namespace tavlen::cli {

namespace {

/// Whether the tweak at `argument` builds; says on the standard error stream what is wrong with it,
/// and on the standard output what it holds.
bool check(const std::string& argument, const std::filesystem::path& transpiler) {
  try {
    const OpenedTweak tweak = openTweak(argument);
    const std::vector<std::string> warnings = warningsFor(tweak);
    for (const std::string& warning : warnings) printWarning(warning);
    if (!transpile(tweak, transpiler)) {
      printError(argument + ": does not build");
      return false;
    }
    const std::string verdict =
        warnings.empty()
            ? "ok"
            : std::to_string(warnings.size()) + (warnings.size() == 1 ? " warning" : " warnings");
    printData(oneLine(argument) + ": " + verdict + "\n");
    return true;
  } catch (const std::exception& error) {
    reportError(error);
    return false;
  }
}

}  // namespace

void addCheckCommand(CLI::App& app, Action& action) {
  auto* command = app.add_subcommand("check", "Say what is wrong with tweaks, and where");
  const auto tweaks = std::make_shared<std::vector<std::string>>();
  const auto transpiler = std::make_shared<std::string>();
  command->add_option("TWEAK", *tweaks, "The tweaks' folders")->required();
  addTranspilerOption(*command, *transpiler);
  command->callback([tweaks, transpiler, &action] {
    action = [tweaks, transpiler] {
      bool allBuild = true;
      for (const std::string& tweak : *tweaks) {
        allBuild = check(tweak, transpilerFolder(*transpiler)) && allBuild;
      }
      return allBuild ? 0 : 1;
    };
  });
}

}  // namespace tavlen::cli
