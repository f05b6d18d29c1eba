#include "cli/terminal/Diagnostic.h"

#include <unistd.h>

#include "cli/terminal/Color.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/ShownText.h"
#include "tavlen/foundation/text/Unicode.h"

namespace tavlen::cli {

namespace {

bool& jsonMessages() {
  static bool isUsed = false;
  return isUsed;
}

std::optional<std::string> wellFormed(const std::optional<std::string>& text) {
  return text ? std::optional(wellFormedUTF8(*text)) : std::nullopt;
}

/// Names of files may be any bytes; JSON is UTF-8.
std::string jsonLine(const Diagnostic& diagnostic) {
  Diagnostic shown = diagnostic;
  shown.message = wellFormedUTF8(shown.message);
  shown.file = wellFormed(shown.file);
  shown.place = wellFormed(shown.place);
  return shownJSON(shown) + "\n";
}

ColorRole roleOf(const std::string& severity) {
  if (severity == Diagnostic::kError) return ColorRole::error;
  return severity == Diagnostic::kWarning ? ColorRole::warning : ColorRole::note;
}

/// The message as people read it.
std::string linesOf(const Diagnostic& diagnostic) {
  std::string text = shownLine(placeText(diagnostic)) + ": ";
  if (diagnostic.file || diagnostic.severity != Diagnostic::kNote)
    text += colored(diagnostic.severity, roleOf(diagnostic.severity), STDERR_FILENO) + ": ";
  return text + shownLine(diagnostic.message) + "\n" + diagnostic.excerpt;
}

}  // namespace

std::string placeText(const Diagnostic& diagnostic) {
  std::string text = diagnostic.file.value_or("tavlen");
  if (diagnostic.line && diagnostic.column) {
    text.append(":").append(std::to_string(*diagnostic.line));
    text.append(":").append(std::to_string(*diagnostic.column));
  }
  if (diagnostic.place) text.append(": ").append(*diagnostic.place);
  return text;
}

void useJSONMessages() { jsonMessages() = true; }

bool hasJSONMessages() { return jsonMessages(); }

std::string shownMessage(const Diagnostic& diagnostic) {
  return hasJSONMessages() ? jsonLine(diagnostic) : linesOf(diagnostic);
}

void print(const Diagnostic& diagnostic) { printMessage(shownMessage(diagnostic)); }

}  // namespace tavlen::cli
