#include "cli/terminal/EditedText.h"

#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <optional>
#include <stdexcept>
#include <system_error>

#include "cli/terminal/ShownText.h"
#include "tavlen/device/Process.h"
#include "tavlen/foundation/files/FileReplacement.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/files/TemporaryDirectory.h"

namespace tavlen::cli {

namespace {

/// The user's editor; nothing if none is set.
std::optional<std::string> chosenEditor() {
  for (const char* variable : {"VISUAL", "EDITOR"}) {
    const char* value = std::getenv(variable);  // NOLINT(concurrency-mt-unsafe)
    if (value != nullptr && *value != '\0') return value;
  }
  return std::nullopt;
}

/// Ignores keyboard signals during its lifetime (RAII): Ctrl-C in the editor is meant for the
/// editor.
class KeyboardSignals {
 public:
  KeyboardSignals() {
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
      struct sigaction ignore {};
      ignore.sa_handler = SIG_IGN;
      ::sigaction(kSignals[i], &ignore, &before_[i]);
    }
  }
  KeyboardSignals(const KeyboardSignals&) = delete;
  KeyboardSignals& operator=(const KeyboardSignals&) = delete;
  ~KeyboardSignals() {
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
      ::sigaction(kSignals[i], &before_[i], nullptr);
    }
  }

 private:
  static constexpr std::array<int, 2> kSignals = {SIGINT, SIGQUIT};
  std::array<struct sigaction, 2> before_{};
};

}  // namespace

EditedText::EditedText(const std::string& name, std::string_view text) {
  const std::filesystem::path folder = makeUniqueTemporaryFolder("tavlen-");
  file_ = folder / name;
  try {
    replaceFile(file_, text);
  } catch (...) {
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
    throw;
  }
}

EditedText::~EditedText() {
  std::error_code ignored;
  if (!isKept_) std::filesystem::remove_all(file_.parent_path(), ignored);
}

bool EditedText::hasTerminal() {
  return ::isatty(STDIN_FILENO) != 0 && ::isatty(STDOUT_FILENO) != 0;
}

void EditedText::edit() const {
  // Run a shell, because the variables may contain options. Pass the file as an argument rather
  // than in the command text, so that it needs no quoting.
  const std::optional<std::string> chosen = chosenEditor();
  const bool isShown = hasTerminal();
  if (!chosen && !isShown) {
    throw std::runtime_error(
        "there is no terminal for an editor; set EDITOR to a program that needs none");
  }
  const std::string program = chosen.value_or("vi");
  // Without a terminal, an editor that needs one would wait for input that never comes.
  const std::string command = program + " \"$@\"" + (isShown ? "" : " </dev/null");
  Process process("/bin/sh", {"sh", "-c", command, program, file_.string()});
  try {
    process.launch();
    // Only after starting the editor, which must not inherit the ignored signals.
    const KeyboardSignals ignored;
    process.waitUntilExit();
  } catch (const Process::Error& error) {
    throw std::runtime_error(program + ": " + errorText(error) +
                             (isShown ? "" : " (there is no terminal)"));
  }
}

std::string EditedText::text() const { return readFile(file_); }

void EditedText::setText(std::string_view text) const { replaceFile(file_, text); }

}  // namespace tavlen::cli
