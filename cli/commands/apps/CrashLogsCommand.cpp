#include <filesystem>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include "cli/arguments/AppArgument.h"
#include "cli/commands/Commands.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/ShownText.h"
#include "tavlen/device/FileOperations.h"
#include "tavlen/device/Process.h"
#include "tavlen/foundation/text/EscapedText.h"
#include "tavlen/foundation/text/Unicode.h"

namespace tavlen::cli {

namespace {

std::set<std::string> namesIn(const std::filesystem::path& directory) {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(directory)) {
    names.insert(entry.path().filename().string());
  }
  return names;
}

struct Options {
  std::string app;
  std::string directory;
  bool json = false;
};

/// A row of the output, which describes one log.
struct Row {
  std::string name;
  std::string path;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("name", &Row::name), requiredField("path", &Row::path)};
  }
};

/// Copies the logs and prints the names of the new files.
int copyLogs(const Options& options) {
  const std::filesystem::path directory = options.directory;
  const std::set<std::string> before = namesIn(directory);
  const std::shared_ptr<IPA> ipa = appArgument(options.app);
  try {
    namingInfo(*ipa, [&] { ipa->copyCrashLogs(std::filesystem::canonical(directory)); });
  } catch (const Process::Error& error) {
    throw std::runtime_error(FileOperations::helper().string() + ": " + errorText(error));
  }
  std::vector<Row> rows;
  std::string lines;
  for (const std::string& name : namesIn(directory)) {
    if (before.contains(name)) continue;
    rows.push_back({wellFormedUTF8(name), wellFormedUTF8((directory / name).native())});
    lines += escapedForTerminal(name) + "\n";
  }
  if (rows.empty()) printNote("no new crash logs");
  printData(options.json ? shownJSON(rows) + "\n" : lines);
  return 0;
}

}  // namespace

void addCrashLogsCommand(Command app) {
  Command command = app.addCommand("crash-logs", "Copy the crash logs of an app into a folder");
  const auto options = std::make_shared<Options>();
  command.text("APP", options->app, kAppHelp).required().notEmpty();
  command.text("DIR", options->directory, "An existing folder; no file in it is replaced")
      .required()
      .notEmpty();
  command.flag("--json", options->json, "Print the new files as a JSON array");
  command.run([options] { return copyLogs(*options); });
}

}  // namespace tavlen::cli
