#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/arguments/AppArgument.h"
#include "cli/commands/Commands.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/ShownText.h"
#include "tavlen/foundation/text/EscapedText.h"

namespace tavlen::cli {

namespace {

/// The output for an app: the values that the accessors return, including fallbacks.
struct Summary {
  std::string name;
  std::string bundleName;
  std::string bundleID;
  std::string version;
  std::string build;
  std::string executable;
  std::optional<SemanticVersion> minimumOSVersion;
  bool supportsIPad = false;
  std::optional<std::vector<InterfaceOrientation>> orientations;
  std::optional<std::vector<InterfaceOrientation>> ipadOrientations;

  static constexpr auto codedFields() {
    return std::tuple{
        requiredField("name", &Summary::name),
        requiredField("bundleName", &Summary::bundleName),
        requiredField("bundleID", &Summary::bundleID),
        requiredField("version", &Summary::version),
        requiredField("build", &Summary::build),
        requiredField("executable", &Summary::executable),
        optionalField("minimumOSVersion", &Summary::minimumOSVersion),
        requiredField("supportsIPad", &Summary::supportsIPad),
        optionalField("orientations", &Summary::orientations),
        optionalField("ipadOrientations", &Summary::ipadOrientations),
    };
  }
};

Summary summaryOf(const Info& info) {
  Summary summary;
  summary.name = info.name();
  summary.bundleName = info.bundleName();
  summary.bundleID = info.bundleID;
  summary.version = info.version();
  summary.build = info.build;
  summary.executable = info.executable;
  summary.minimumOSVersion = info.minimumOSVersion;
  summary.supportsIPad = info.supportsIPad();
  summary.orientations = info.orientations();
  summary.ipadOrientations = info.ipadOrientations();
  return summary;
}

std::string row(const std::string& title, const std::string& value) {
  constexpr std::size_t kTitleWidth = 20;
  std::string text = title + ":";
  text.resize(kTitleWidth, ' ');
  return text + escapedForTerminal(value) + "\n";
}

std::string listed(const std::vector<InterfaceOrientation>& orientations) {
  constexpr std::string_view kPrefix = "UIInterfaceOrientation";
  std::string text;
  for (const InterfaceOrientation orientation : orientations) {
    if (!text.empty()) text += ", ";
    text += rawValue(orientation).substr(kPrefix.size());
  }
  return text.empty() ? "none" : text;
}

std::string table(const Summary& summary) {
  std::string text = row("Name", summary.name) + row("Bundle name", summary.bundleName) +
                     row("Identifier", summary.bundleID) + row("Version", summary.version) +
                     row("Build", summary.build) + row("Executable", summary.executable);
  if (summary.minimumOSVersion)
    text += row("Minimum OS version", summary.minimumOSVersion->description());
  text += row("iPad", summary.supportsIPad ? "yes" : "no");
  if (summary.orientations) text += row("Orientations", listed(*summary.orientations));
  if (summary.ipadOrientations)
    text += row("Orientations, iPad", listed(*summary.ipadOrientations));
  return text;
}

}  // namespace

void addInfoCommand(Command app) {
  Command command = app.addCommand("info", "Print the main values of an app's Info.plist");
  const auto name = std::make_shared<std::string>();
  const auto json = std::make_shared<bool>(false);
  command.text("APP", *name, kAppHelp).required().notEmpty();
  command.flag("--json", *json, "Print a JSON object");
  command.run([name, json] {
    const Summary summary = summaryOf(readInfo(*appArgument(*name)));
    printData(*json ? shownJSON(summary) + "\n" : table(summary));
    return 0;
  });
}

}  // namespace tavlen::cli
