#include <exception>
#include <memory>
#include <stdexcept>
#include <string>

#include "cli/arguments/StoredItem.h"
#include "cli/commands/Commands.h"
#include "cli/items/ItemRow.h"
#include "cli/items/StoreLock.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/EditedText.h"
#include "cli/terminal/ShownText.h"
#include "cli/tweaks/TweakForReading.h"
#include "tavlen/foundation/files/FileTree.h"
#include "tavlen/foundation/text/Unicode.h"

namespace tavlen::cli {

namespace {

std::string scriptOf(const TweakFile& tweak) { return tweak.readScript().value_or(std::string()); }

struct Options {
  std::string tweak;
  std::string file;
  std::string output = "-";
  bool force = false;
  bool json = false;
};

int show(const Options& options) {
  const std::string script = scriptOf(*tweakForReading(options.tweak).file);
  writeOutput(options.output, options.force, options.json ? shownJSON(script) + "\n" : script);
  return 0;
}

/// Prints the changed tweak, if the user wants it.
int done(const Options& options) {
  if (options.json) printRow(openedItem(options.tweak));
  return 0;
}

void requireUTF8(const std::string& text, const std::string& file) {
  if (!isValidUTF8(text)) throw std::runtime_error(file + ": is not UTF-8");
}

int set(const Options& options) {
  const std::shared_ptr<TweakFile> tweak = storedTweak(options.tweak);
  const std::string text = readInput(options.file);
  requireUTF8(text, shownInput(options.file));
  const StoreLock lock(options.tweak);
  tweak->writeScript(text);
  return done(options);
}

int clear(const Options& options) {
  removeItem(storedTweak(options.tweak)->url() / TweakFile::scriptFile);
  return done(options);
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

int edit(const Options& options) {
  const std::shared_ptr<TweakFile> tweak = storedTweak(options.tweak);
  const std::string before = scriptOf(*tweak);
  EditedText edited("script.objs", before);
  try {
    edited.edit();
    if (edited.text() == before) {
      printNote("the script is unchanged");
      return done(options);
    }
    store(options.tweak, *tweak, before, edited);
  } catch (const std::exception& error) {
    // If the text is unchanged, there is nothing to keep.
    if (edited.text() == before) throw;
    edited.keep();
    throw std::runtime_error(errorText(error) + std::string("; your text is in ") +
                             edited.file().string());
  }
  return done(options);
}

}  // namespace

void addScriptCommand(Command app) {
  Command group = app.addCommand("script", "Show, replace, edit or remove the script of a tweak");
  group.requireCommand();
  const auto options = std::make_shared<Options>();
  const auto add = [&](const char* name, const char* help, const char* jsonHelp,
                       const char* tweakHelp = kTweakHelp) {
    Command command = group.addCommand(name, help);
    command.text("TWEAK", options->tweak, tweakHelp).required().notEmpty();
    command.flag("--json", options->json, jsonHelp);
    return command;
  };
  Command showing = add("show", "Print the script", "Print a JSON string", kReadTweakHelp);
  showing
      .text("-o,--output", options->output,
            "The file to write; - for the standard output, the default")
      .notEmpty()
      .typeName("FILE");
  showing.flag("-f,--force", options->force, kForceHelp);
  showing.run([options] { return show(*options); });
  constexpr const char* kRowHelp = "Print the tweak as a JSON object";
  Command setting = add("set", "Store another script", kRowHelp);
  setting.text("FILE", options->file, "The script, in UTF-8; - for the standard input")
      .required()
      .notEmpty();
  setting.run([options] { return set(*options); });
  Command editing = add("edit", "Edit the script in $VISUAL or $EDITOR", kRowHelp);
  editing.run([options] { return edit(*options); });
  Command clearing = add("clear", "Remove the script", kRowHelp);
  runEdit(clearing, options->tweak, [options] { return clear(*options); });
}

}  // namespace tavlen::cli
