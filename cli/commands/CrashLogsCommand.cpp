#include <filesystem>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>

#include "cli/arguments/AppArgument.h"
#include "cli/commands/Commands.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/ShownText.h"
#include "tavlen/device/FileOperations.h"
#include "tavlen/device/Process.h"
#include "tavlen/foundation/text/EscapedText.h"

namespace tavlen::cli {

namespace {

std::set<std::string> namesIn(const std::filesystem::path& directory) {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(directory)) {
    names.insert(entry.path().filename().string());
  }
  return names;
}

/// Copies the logs and prints the names of the new files.
int copyLogs(const std::string& app, const std::filesystem::path& directory) {
  const std::set<std::string> before = namesIn(directory);
  const std::shared_ptr<IPA> ipa = appArgument(app);
  try {
    namingInfo(*ipa, [&] { ipa->copyCrashLogs(std::filesystem::canonical(directory)); });
  } catch (const Process::Error& error) {
    throw std::runtime_error(FileOperations::helper().string() + ": " + errorText(error));
  }
  std::string added;
  for (const std::string& name : namesIn(directory)) {
    if (!before.contains(name)) added += escapedForTerminal(name) + "\n";
  }
  if (added.empty()) {
    printNote("no new crash logs");
  }
  printData(added);
  return 0;
}

}  // namespace

void addCrashLogsCommand(Command app) {
  Command command = app.addCommand("crash-logs", "Copy the crash logs of an app into a folder");
  const auto name = std::make_shared<std::string>();
  const auto directory = std::make_shared<std::string>();
  command.text("APP", *name, kAppHelp).required().notEmpty();
  command.text("DIR", *directory, "An existing folder; no file in it is replaced")
      .required()
      .notEmpty();
  command.run([name, directory] { return copyLogs(*name, *directory); });
}

}  // namespace tavlen::cli
