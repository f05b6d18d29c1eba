#include <memory>
#include <string>
#include <vector>

#include "cli/arguments/UsageError.h"
#include "cli/commands/Commands.h"
#include "cli/help/Examples.h"
#include "cli/help/HelpPage.h"
#include "cli/help/ManualPage.h"

namespace tavlen::cli {

namespace {

struct Options {
  std::vector<std::string> words;
  bool isManual = false;
  bool isExamples = false;
};

/// The path to the command. Throws UsageError for a word that is no command.
CommandPath pathToAll(const CommandRecord& root, const std::vector<std::string>& words) {
  CommandPath path = pathTo(root, words);
  if (path.size() <= words.size())
    throw UsageError::about(wordsOf(path),
                            unknownCommandText(words[path.size() - 1], *path.back()));
  return path;
}

std::string helpText(const CommandRecord& root, const Options& options) {
  if (options.isManual) return manualPage(root);
  if (!options.isExamples) return helpPage(pathToAll(root, options.words));
  std::string lines;
  for (const Example& example : examples()) lines += exampleText(example) + "\n";
  return lines;
}

}  // namespace

void addHelpCommand(Command app) {
  Command command = app.addCommand("help", "Describe a command, or list the commands");
  const auto options = std::make_shared<Options>();
  const Option words =
      command.texts("COMMAND", options->words, "The command and its subcommand").optional();
  const Option manual =
      command.flag("--man", options->isManual, "Print the manual page, for man -l -")
          .excludes(words);
  command.flag("--examples", options->isExamples, "Print the examples of all commands")
      .excludes(words)
      .excludes(manual);
  command.answer([app, options] { return helpText(app.record(), *options); });
}

}  // namespace tavlen::cli
