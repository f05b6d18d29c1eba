#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/arguments/AppArgument.h"
#include "cli/classes/AppForReading.h"
#include "cli/commands/Commands.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/FieldList.h"
#include "cli/terminal/ShownText.h"

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

std::string listed(const std::vector<InterfaceOrientation>& orientations) {
  constexpr std::string_view kPrefix = "UIInterfaceOrientation";
  std::string text;
  for (const InterfaceOrientation orientation : orientations) {
    if (!text.empty()) text += ", ";
    text += rawValue(orientation).substr(kPrefix.size());
  }
  return text.empty() ? "none" : text;
}

std::string fields(const Summary& summary) {
  FieldList fields(20);
  fields.add("Name", summary.name);
  fields.add("Bundle name", summary.bundleName);
  fields.add("Identifier", summary.bundleID);
  fields.add("Version", summary.version);
  fields.add("Build", summary.build);
  fields.add("Executable", summary.executable);
  if (summary.minimumOSVersion) {
    fields.add("Minimum OS version", summary.minimumOSVersion->description());
  }
  fields.add("iPad", summary.supportsIPad ? "yes" : "no");
  if (summary.orientations) fields.add("Orientations", listed(*summary.orientations));
  if (summary.ipadOrientations) {
    fields.add("Orientations, iPad", listed(*summary.ipadOrientations));
  }
  return fields.text();
}

}  // namespace

void addInfoCommand(Command app) {
  Command command = app.addCommand("info", "Print the main values of an app's Info.plist");
  const auto name = std::make_shared<std::string>();
  const auto json = std::make_shared<bool>(false);
  command.text("APP", *name, kReadAppHelp).required().notEmpty();
  command.flag("--json", *json, "Print a JSON object");
  command.run([name, json] {
    const Summary summary =
        summaryOf(readInfo(*AppForReading(*name, AppForReading::Files::info).ipa()));
    printData(*json ? shownJSON(summary) + "\n" : fields(summary));
    return 0;
  });
}

}  // namespace tavlen::cli
