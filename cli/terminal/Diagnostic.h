#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "cli/terminal/Candidate.h"
#include "tavlen/foundation/coding/Coding.h"

namespace tavlen::cli {

/// A message for the user: what happened, and where. The command writes all its messages in this
/// form, either for people or, after useJSONMessages(), for programs.
struct Diagnostic {
  static constexpr const char* kError = "error";
  static constexpr const char* kWarning = "warning";
  static constexpr const char* kNote = "note";

  std::string severity;                      ///< one of the three above
  std::string message;                       ///< the fault, without its place
  std::optional<std::string> file = {};      ///< the document, as the user named it
  std::optional<std::uint64_t> line = {};    ///< in the file, from 1; together with the column
  std::optional<std::uint64_t> column = {};  ///< from 1
  std::optional<std::string> place = {};     ///< in a document without lines: "hooks[2].args.0"
  std::optional<std::string> code = {};      ///< the name of the rule, for programs: "unknown-key"
  /// The items that an ambiguous name may mean, only for programs.
  std::optional<std::vector<Candidate>> candidates = {};
  /// Lines to show after the message, only to people. They are printed unchanged.
  std::string excerpt = {};

  static constexpr auto codedFields() {
    return std::tuple{optionalField("file", &Diagnostic::file),
                      optionalField("line", &Diagnostic::line),
                      optionalField("column", &Diagnostic::column),
                      optionalField("place", &Diagnostic::place),
                      requiredField("severity", &Diagnostic::severity),
                      optionalField("code", &Diagnostic::code),
                      requiredField("message", &Diagnostic::message),
                      optionalField("candidates", &Diagnostic::candidates)};
  }
};

/// The parts of a message that tell where: "FILE:LINE:COLUMN: PLACE"; "tavlen" without a file.
std::string placeText(const Diagnostic& diagnostic);

/// The message with texts that are UTF-8: names of files may be any bytes.
Diagnostic wellFormed(Diagnostic diagnostic);

/// The message as a warning: of an error with which the command goes on.
Diagnostic asWarning(Diagnostic diagnostic);

/// Makes all messages of this process JSON objects, one a line. Not thread-safe.
void useJSONMessages();
/// Whether useJSONMessages() was called.
bool hasJSONMessages();

/// The message on one line, escaped for the terminal, with a line break: a JSON object after
/// useJSONMessages(). Otherwise "FILE:LINE:COLUMN: PLACE: SEVERITY: MESSAGE" with the parts that
/// there are, followed by the excerpt; without a file it begins with "tavlen", and a note then has
/// no severity.
std::string shownMessage(const Diagnostic& diagnostic);

/// Writes shownMessage() to the standard error stream, or passes the message to the
/// MessageReceiver. Ignores errors. Threads: any.
void print(const Diagnostic& diagnostic);

/// Receives the messages of print() as long as it exists (RAII). There is at most one. Threads:
/// make and destroy it while no other thread prints; `receive` may be called by any thread, one at
/// a time.
class MessageReceiver {
 public:
  using Receive = std::function<void(const Diagnostic& diagnostic)>;

  explicit MessageReceiver(Receive receive);
  MessageReceiver(const MessageReceiver&) = delete;
  MessageReceiver& operator=(const MessageReceiver&) = delete;
  ~MessageReceiver();
};

}  // namespace tavlen::cli
