#include "cli/terminal/Diagnostic.h"

#include <unistd.h>

#include <mutex>
#include <utility>

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

std::string jsonLine(const Diagnostic& diagnostic) {
  return shownJSON(wellFormed(diagnostic)) + "\n";
}

/// The function that gets the messages; empty unless there is a MessageReceiver.
MessageReceiver::Receive& receiver() {
  static MessageReceiver::Receive receive;
  return receive;
}

std::mutex& receiverLock() {
  static std::mutex lock;
  return lock;
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

Diagnostic asWarning(Diagnostic diagnostic) {
  diagnostic.severity = Diagnostic::kWarning;
  return diagnostic;
}

void useJSONMessages() { jsonMessages() = true; }

bool hasJSONMessages() { return jsonMessages(); }

std::string shownMessage(const Diagnostic& diagnostic) {
  return hasJSONMessages() ? jsonLine(diagnostic) : linesOf(diagnostic);
}

Diagnostic wellFormed(Diagnostic diagnostic) {
  diagnostic.message = wellFormedUTF8(diagnostic.message);
  diagnostic.file = wellFormed(diagnostic.file);
  diagnostic.place = wellFormed(diagnostic.place);
  if (diagnostic.candidates) {
    for (Candidate& each : *diagnostic.candidates) each.id = wellFormedUTF8(each.id);
  }
  return diagnostic;
}

void print(const Diagnostic& diagnostic) {
  const std::lock_guard lock(receiverLock());
  if (receiver()) return receiver()(diagnostic);
  printMessage(shownMessage(diagnostic));
}

MessageReceiver::MessageReceiver(Receive receive) { receiver() = std::move(receive); }

MessageReceiver::~MessageReceiver() { receiver() = nullptr; }

}  // namespace tavlen::cli
