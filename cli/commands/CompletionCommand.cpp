#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <exception>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "cli/commands/Commands.h"
#include "cli/commands/CompletionCandidates.h"
#include "cli/help/CompletedWord.h"
#include "cli/help/ShellLine.h"
#include "cli/terminal/Console.h"

namespace tavlen::cli {

namespace {

/// The scripts call `complete`, which knows all options and what is stored. It prints "files",
/// "folders" or "words", then a candidate a line.
constexpr const char* kBash =
    R"(# Completion of tavlen for bash: source it, or install it as completions/tavlen of bash-completion.
_tavlen() {
  local kind
  COMPREPLY=()
  { read -r kind && mapfile -t COMPREPLY; } < <("$1" complete --line -- "${COMP_LINE:0:COMP_POINT}" 2>/dev/null)
  case $kind in
    files) compopt -o default ;;
    folders) compopt -o dirnames ;;
  esac
}
complete -F _tavlen tavlen
)";

constexpr const char* kZsh = R"(#compdef tavlen
# Completion of tavlen for zsh: install it as _tavlen in a folder of $fpath.
_tavlen() {
  local -a lines
  lines=("${(@f)$("${words[1]}" complete -- "${(@Q)words[1,CURRENT-1]}" "${(Q)PREFIX}" 2>/dev/null)}")
  local kind=$lines[1]
  shift lines
  (( $#lines )) && compadd -- "${lines[@]}"
  case $kind in
    files) _files ;;
    folders) _files -/ ;;
  esac
}
if [ "$funcstack[1]" = _tavlen ]; then _tavlen "$@"; else compdef _tavlen tavlen; fi
)";

struct Options {
  std::vector<std::string> words;
  bool isLine = false;
};

/// A shell waits for the answer while nothing is shown: rather none than a late one.
void limitTime() {
  constexpr unsigned kSeconds = 3;
  (void)std::signal(SIGALRM, [](int) { ::_exit(0); });
  ::alarm(kSeconds);
}

std::string answer(const CommandRecord& root, const Options& options) {
  ShellLine line{options.words};
  if (options.isLine) line = ShellLine::read(options.words.front());
  if (line.words.size() < 2) return "words\n";
  const CompletedWord word = CompletedWord::of(root, line.words);
  // The slash in the name of a glyph is not one of a path.
  const bool isPath = word.prefix.find('/') != std::string::npos && !word.hasKind("GLYPH");
  const bool hasFiles =
      isPath || std::any_of(word.kinds.begin(), word.kinds.end(), [](const std::string& kind) {
        return kind == "FILE" || kind == "IMAGE" || isComparedKind(kind);
      });
  std::string text = hasFiles ? "files\n" : word.hasKind("DIR") ? "folders\n" : "words\n";
  std::set<std::string> candidates;
  for (const std::string& value : word.values) candidates.insert(value);
  try {
    candidates.merge(completionCandidates(word));
  } catch (const std::exception&) {
    // A message would stand in the middle of the user's line.
  }
  for (const std::string& candidate : candidates) {
    if (!candidate.starts_with(word.prefix) || candidate.find('\n') != std::string::npos) continue;
    const std::string whole = word.start + candidate;
    text += (options.isLine ? line.completion(whole) : whole) + "\n";
  }
  return text;
}

int complete(const CommandRecord& root, const Options& options) {
  limitTime();
  printData(answer(root, options));
  return 0;
}

void addComplete(Command app) {
  Command command = app.addCommand("complete", "Print what may stand at the end of a line");
  command.hide();
  const auto options = std::make_shared<Options>();
  command.texts("WORD", options->words, "The words of the line, the last one incomplete");
  command.flag("--line", options->isLine, "The only word is the line, for bash");
  command.run([app, options] { return complete(app.record(), *options); });
}

}  // namespace

void addCompletionCommand(Command app) {
  Command command = app.addCommand("completion", "Print a script that completes lines in a shell");
  const auto shell = std::make_shared<std::string>();
  command.text("SHELL", *shell, "The shell").required().oneOf({"bash", "zsh"});
  command.answer([shell] { return *shell == "bash" ? kBash : kZsh; });
  addComplete(app);
}

}  // namespace tavlen::cli
