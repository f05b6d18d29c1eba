#include <exception>
#include <memory>
#include <stdexcept>
#include <string>

#include "cli/arguments/StoredItem.h"
#include "cli/commands/Commands.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/EditedText.h"
#include "cli/terminal/ShownText.h"
#include "cli/work/StoreLock.h"
#include "cli/work/TweakForReading.h"
#include "tavlen/foundation/text/Unicode.h"

namespace tavlen::cli {

namespace {

std::string scriptOf(const TweakFile& tweak) { return tweak.readScript().value_or(std::string()); }

int show(const std::string& name, bool json) {
  const std::string script = scriptOf(*tweakForReading(name).file);
  printData(json ? shownJSON(script) + "\n" : script);
  return 0;
}

void requireUTF8(const std::string& text, const std::string& file) {
  if (!isValidUTF8(text)) throw std::runtime_error(file + ": is not UTF-8");
}

int set(const std::string& name, const std::string& file) {
  const std::shared_ptr<TweakFile> tweak = storedTweak(name);
  const std::string text = readInput(file);
  requireUTF8(text, file == "-" ? "standard input" : file);
  const StoreLock lock(name);
  tweak->writeScript(text);
  return 0;
}

/// Stores the edited text of the tweak called `name`. Throws if the stored script is no longer
/// `before`.
void store(const std::string& name, TweakFile& tweak, const std::string& before,
           const EditedText& edited) {
  const std::string after = edited.text();
  requireUTF8(after, "the edited text");
  const StoreLock lock(name);
  if (scriptOf(tweak) != before) {
    throw std::runtime_error("the script changed on disk while you were editing it");
  }
  tweak.writeScript(after);
}

int edit(const std::string& name) {
  const std::shared_ptr<TweakFile> tweak = storedTweak(name);
  const std::string before = scriptOf(*tweak);
  EditedText edited("script.objs", before);
  try {
    edited.edit();
    if (edited.text() == before) {
      printNote("the script is unchanged");
      return 0;
    }
    store(name, *tweak, before, edited);
  } catch (const std::exception& error) {
    // If the text is unchanged, there is nothing to keep.
    if (edited.text() == before) throw;
    edited.keep();
    throw std::runtime_error(errorText(error) + std::string("; your text is in ") +
                             edited.file().string());
  }
  return 0;
}

}  // namespace

void addScriptCommand(Command app) {
  Command group = app.addCommand("script", "Show, replace or edit the script of a tweak");
  group.requireCommand();
  const auto tweak = std::make_shared<std::string>();
  const auto file = std::make_shared<std::string>();
  const auto add = [&](const char* name, const char* help) {
    Command command = group.addCommand(name, help);
    command.text("TWEAK", *tweak, kTweakHelp).required().notEmpty();
    return command;
  };
  Command showing = add("show", "Print the script");
  const auto json = std::make_shared<bool>(false);
  showing.flag("--json", *json, "Print a JSON string");
  showing.run([tweak, json] { return show(*tweak, *json); });
  Command setting = add("set", "Store another script");
  setting.text("FILE", *file, "The script, in UTF-8; - for the standard input")
      .required()
      .notEmpty();
  setting.run([tweak, file] { return set(*tweak, *file); });
  add("edit", "Edit the script in $VISUAL or $EDITOR").run([tweak] { return edit(*tweak); });
}

}  // namespace tavlen::cli
