#include <algorithm>
#include <exception>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "cli/arguments/StoredItem.h"
#include "cli/commands/Commands.h"
#include "cli/items/AppChange.h"
#include "cli/items/ItemNames.h"
#include "cli/items/StoreLock.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/EditedText.h"
#include "cli/terminal/ShownText.h"
#include "cli/tweaks/TextComments.h"
#include "cli/tweaks/TextInput.h"
#include "cli/tweaks/TextMessages.h"
#include "cli/tweaks/Transpilation.h"
#include "cli/tweaks/TweakCheck.h"
#include "cli/tweaks/TweakContents.h"
#include "tavlen/device/DeviceFiles.h"
#include "tavlen/items/StoredDocument.h"

namespace tavlen::cli {

namespace {

namespace fs = std::filesystem;

bool isBlank(const std::string& text) {
  return text.find_first_not_of(" \t\r\n") == std::string::npos;
}

/// An edit of one tweak's text.
class Session {
 public:
  explicit Session(const std::string& tweak)
      : path_(fs::absolute(storedTweak(tweak)->url()).string()),
        document_(documentBytes()),
        before_(contentsOf(openedTweak(path_))),
        dumped_(textOf(before_)),
        edited_(kTextFile, dumped_) {}

  /// Returns the text that the user made of the tweak's, or nothing for none or the same.
  std::optional<TextInput> ask() {
    std::string last = dumped_;
    std::vector<std::string> lastErrors;
    for (;;) {
      edited_.edit();
      const std::string text = ownText();
      if (text == dumped_) return std::nullopt;
      if (isBlank(text)) {
        printNote("the text is empty");
        return std::nullopt;
      }
      if (text == last) throw std::runtime_error("the text has errors");
      std::vector<Diagnostic> errors;
      const auto report = [&](const Diagnostic& error) { errors.push_back(error); };
      auto input = readTextInput({text, kTextFile, path_, false}, report);
      if (input) check(*input, report);
      if (errors.empty()) return input;
      std::vector<std::string> lines;
      for (const Diagnostic& error : errors) {
        print(error);
        lines.push_back(placeText(error) + error.message);
      }
      // A program that does not see the errors would add to its text for ever.
      if (lines == lastErrors && !EditedText::hasTerminal())
        throw std::runtime_error("the text still has errors");
      lastErrors = std::move(lines);
      edited_.setText(withComments(text, errors));
      last = text;
    }
  }

  /// Makes the tweak what the text says. Throws if it is no longer what was edited.
  std::vector<TweakChange> store(const TextInput& input) {
    const TweakContents after = contentsOf(input);
    const std::string& app = after.manifest.configuration.bundleID;
    // Checked before the helper runs, and once more under the lock.
    takeAway(checkedTweak(after), app);
    const StoreLock lock(path_);
    const TweakFile::Opened tweak = checkedTweak(after);
    const TweakContents now = contentsOf(tweak);
    std::vector<TweakChange> changes = changesBetween(now, after);
    if (changes.empty()) return changes;
    replaceContents(*tweak.file, now, after);
    if (before_.manifest.configuration.bundleID != app) warnOfCollections(tweak.file->id(), app);
    return changes;
  }

  /// Keeps the user's text if there is any. Returns where it is, to be shown after an error.
  std::string keptText() {
    const std::string text = ownText();
    if (text == dumped_ || isBlank(text)) return "";
    edited_.setText(text);
    edited_.keep();
    return "; your text is in " + edited_.file().string();
  }

  /// The tweak's folder.
  const std::string& path() const { return path_; }

 private:
  std::string ownText() const { return withoutComments(edited_.text()); }

  /// Reports the errors of a text that was read. An error in the script is only a warning: the text
  /// cannot mend it.
  void check(const TextInput& input, const DiagnosticSink& report) const {
    const TweakFile::Opened tweak = openedTweak(path_);
    try {
      requireNameFor(tweak, input.text.manifest.configuration.name);
    } catch (const std::runtime_error& error) {
      TextMessages(input.file, report).error(input.text.name, "taken-name", errorText(error));
    }
    const auto error = conversionErrorOf(input);
    if (!error) return;
    if (error->file == input.file) return report(*error);
    print(asWarning(*error));
  }

  /// Opens the tweak. Throws if it is no longer what was edited, or cannot be called so.
  TweakFile::Opened checkedTweak(const TweakContents& after) const {
    TweakFile::Opened tweak = openedTweak(path_);
    const TweakContents now = contentsOf(tweak);
    // The bytes, because unequal documents may hold equal manifests: those of 0.0 and -0.0.
    if (documentBytes() != document_ || now.icon != before_.icon || now.script != before_.script) {
      throw std::runtime_error("the tweak changed on disk while you were editing it");
    }
    requireNameFor(tweak, after.manifest.configuration.name);
    return tweak;
  }

  std::string documentBytes() const {
    return readDocument(openedFile(DeviceRoot::shared(), fs::path(path_) / kDocumentFile));
  }

  std::string path_;
  std::string document_;  ///< read before the manifest, so that no change between is missed
  TweakContents before_;
  std::string dumped_;
  EditedText edited_;
};

int edit(const std::string& tweak, bool json) {
  Session session(tweak);
  std::vector<TweakChange> changes;
  try {
    if (const auto input = session.ask()) {
      for (const Diagnostic& warning : warningsFor(*input, session.path())) print(warning);
      changes = session.store(*input);
    }
  } catch (const std::exception& error) {
    throw std::runtime_error(errorText(error) + session.keptText());
  }
  if (changes.empty()) printNote("the tweak is unchanged");
  if (json || !changes.empty()) printChanges(changes, json);
  return 0;
}

}  // namespace

void addEditCommand(Command app) {
  Command command = app.addCommand(
      "edit", "Edit a whole tweak as a text in $VISUAL or $EDITOR, and print what changed");
  const auto tweak = std::make_shared<std::string>();
  const auto json = std::make_shared<bool>(false);
  command.text("TWEAK", *tweak, kTweakHelp).required().notEmpty();
  command.flag("--json", *json, "Print what changed as a JSON array");
  command.run([tweak, json] { return edit(*tweak, *json); });
}

}  // namespace tavlen::cli
