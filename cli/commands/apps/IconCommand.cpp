#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <tuple>

#include "cli/arguments/AppArgument.h"
#include "cli/arguments/ArchiveFile.h"
#include "cli/arguments/StoredItem.h"
#include "cli/arguments/UsageError.h"
#include "cli/classes/AppForReading.h"
#include "cli/commands/Commands.h"
#include "cli/terminal/PlacedError.h"
#include "cli/terminal/ReportedError.h"
#include "cli/terminal/ShownText.h"
#include "cli/tweaks/TweakForReading.h"
#include "tavlen/bundles/InfoManager.h"
#include "tavlen/foundation/text/Unicode.h"

namespace tavlen::cli {

namespace {

struct Options {
  std::string subject;
  std::string output;
  std::optional<std::string> name;
  std::optional<std::uint32_t> size;
  bool force = false;
  bool json = false;
};

constexpr const char* kSubjectHelp =
    "The app: its bundle identifier, the path of its bundle folder, or an archive (.ipa); or a "
    "tweak: its identifier, its name, or its path";

/// The file that was written, for the output.
struct Row {
  std::string path;
  std::uint64_t width;
  std::uint64_t height;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("path", &Row::path), requiredField("width", &Row::width),
                      requiredField("height", &Row::height)};
  }
};

/// Whether `text` names a tweak rather than an app. Of an app and a tweak of the same name, the app
/// is meant; the tweak has an identifier, too.
bool isTweak(const std::string& text) {
  if (isArchive(text)) return false;
  if (isItemPath(text)) {
    return formOf(text) != ItemForm::item ||
           std::filesystem::exists(hostPath(itemFolder(text)) / kDocumentFile);
  }
  return !isPath(text) && !isInstalledApp(text);
}

Image iconOfApp(const Options& options) {
  const AppForReading app(options.subject, AppForReading::Files::icon, options.name);
  const IPA& ipa = *app.ipa();
  return namingInfo(ipa, [&] {
    const InfoManager& info = ipa.infoManager();
    return options.name ? info.icon(*options.name) : info.icon();
  });
}

Image iconOfTweak(const Options& options) {
  if (options.name) {
    throw std::runtime_error(options.subject + ": is a tweak; only apps have icons with names");
  }
  const OpenedTweak tweak = [&] {
    try {
      return tweakForReading(options.subject);
    } catch (const PlacedError&) {
      throw;
    } catch (const ReportedError&) {
      throw;
    } catch (const std::runtime_error& error) {
      throw std::runtime_error(errorText(error) + appSuggestion(options.subject));
    }
  }();
  if (const auto own = tweak.file->customIcon()) return *own;
  return appWithBundleID(tweak.manifest.configuration.bundleID)->infoManager().icon();
}

int writeIcon(const Options& options) {
  requireFreeOutput(options.output, options.force);
  try {
    Image icon = isTweak(options.subject) ? iconOfTweak(options) : iconOfApp(options);
    if (options.size) icon = InfoManager::resizedIcon(icon, *options.size);
    writeOutput(options.output, options.force, icon.pngData());
    if (options.json) {
      const Row row = {wellFormedUTF8(options.output), icon.width(), icon.height()};
      printData(shownJSON(row) + "\n");
    }
  } catch (const InfoManager::Error& error) {
    throw std::runtime_error(options.subject + ": " + errorText(error));
  }
  return 0;
}

}  // namespace

void addIconCommand(Command app) {
  Command command =
      app.addCommand("icon", "Write the icon of an app or a tweak as a PNG file; set a tweak's");
  const auto options = std::make_shared<Options>();
  // Both are required unless a subcommand follows.
  const Option name = command.text("APP|TWEAK", options->subject, kSubjectHelp).notEmpty();
  const Option output =
      command.text("-o,--output", options->output, "The file to write; - for the standard output")
          .notEmpty()
          .typeName("FILE");
  command
      .text("--name", options->name,
            "The icon's name in the app's Info.plist; the default is the largest icon")
      .notEmpty()
      .typeName("NAME");
  command.number("--size", options->size, "The length of the longer side in points")
      .typeName("POINTS");
  command.flag("-f,--force", options->force, kForceHelp);
  command.flag("--json", options->json, "Print the file's path and size as a JSON object");
  addTweakIconCommands(command);
  command.prepare([command, name, output, options]() -> Action {
    if (command.hasChosenCommand()) return nullptr;
    name.requireGiven();
    output.requireGiven();
    if (options->json && options->output == "-") {
      throw UsageError("--json", "the standard output already has the icon");
    }
    return [options] { return writeIcon(*options); };
  });
}

}  // namespace tavlen::cli
