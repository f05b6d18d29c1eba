#include "cli/work/Transpilation.h"

#include <charconv>
#include <string>
#include <string_view>

#include "cli/terminal/CaretLine.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/ShownText.h"
#include "tavlen/foundation/text/Characters.h"
#include "tavlen/tweaks/HookSource.h"

namespace tavlen::cli {

namespace {

/// A syntax error as reported by the transpiler. Line and column count from 1, columns in UTF-16
/// units.
struct SyntaxError {
  std::string message;
  std::size_t line;
  std::size_t column;
};

/// Removes a number from the end of `text` and returns it; 0 if there is none.
std::size_t takeNumber(std::string_view& text) {
  std::size_t begin = text.size();
  while (begin > 0 && isDigit(text[begin - 1])) --begin;
  std::size_t value = 0;
  std::from_chars(text.data() + begin, text.data() + text.size(), value);
  text = text.substr(0, begin);
  return value;
}

/// Parses the transpiler's message, which ends in the position: "Unexpected token (12:7)".
std::optional<SyntaxError> syntaxErrorOf(const TweakProcessor::Error& error) {
  std::string_view rest = error.message();
  if (error.name() != "SyntaxError" || !rest.ends_with(')')) return std::nullopt;
  rest.remove_suffix(1);
  const std::size_t column = takeNumber(rest);
  if (column == 0 || !rest.ends_with(':')) return std::nullopt;
  rest.remove_suffix(1);
  const std::size_t line = takeNumber(rest);
  if (line == 0 || !rest.ends_with(" (")) return std::nullopt;
  rest.remove_suffix(2);
  return SyntaxError{std::string(rest), line, column};
}

/// The length of the line end at `i`; 0 if there is none. As in the hook language, a line ends in
/// LF, CR, CRLF, U+2028 or U+2029.
std::size_t lineEndLength(std::string_view text, std::size_t i) {
  if (text[i] == '\n') return 1;
  if (text[i] == '\r') return i + 1 < text.size() && text[i + 1] == '\n' ? 2 : 1;
  const std::string_view rest = text.substr(i);
  return rest.starts_with("\u2028") || rest.starts_with("\u2029") ? 3 : 0;
}

std::size_t lineCount(std::string_view text) {
  std::size_t lines = 0;
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t length = lineEndLength(text, i);
    if (length > 0) ++lines;
    i += length > 0 ? length : 1;
  }
  return lines;
}

std::string_view lineAt(std::string_view text, std::size_t number) {
  std::size_t begin = 0;
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t length = lineEndLength(text, i);
    if (length > 0) {
      if (--number == 0) return text.substr(begin, i - begin);
      begin = i + length;
    }
    i += length > 0 ? length : 1;
  }
  return number == 1 ? text.substr(begin) : std::string_view();
}

/// Prints "PLACE: error: MESSAGE", and the line with a caret under its column.
void printDiagnostic(const std::string& place, const SyntaxError& error, std::string_view text) {
  printMessage(shownLine(place + ": error: " + error.message) + "\n" +
               caretLine(lineAt(text, error.line), error.column));
}

/// Converts pieces of source, one after another. A processor keeps its first exception, so every
/// failure costs a new processor.
class Prober {
 public:
  explicit Prober(const std::filesystem::path& folder) : folder_(folder) {}

  std::optional<SyntaxError> syntaxErrorIn(const std::string& source) {
    if (!processor_) processor_.emplace(folder_);
    try {
      processor_->convert(source);
      return std::nullopt;
    } catch (const TweakProcessor::Error& error) {
      processor_.reset();
      return syntaxErrorOf(error);
    }
  }

 private:
  const std::filesystem::path& folder_;
  std::optional<TweakProcessor> processor_;
};

std::string placeOf(const OpenedTweak& tweak, std::size_t hookPlace) {
  // Messages use the index in the file; `hookPlace` does not count empty entries.
  std::size_t present = 0;
  for (std::size_t i = 0; i < tweak.manifest._hooks.size(); ++i) {
    const auto& hook = tweak.manifest._hooks[i];
    if (!hook || present++ != hookPlace) continue;
    return tweak.pathOf("Manifest.json") + ": hooks[" + std::to_string(i) + "] " +
           methodText({hook->className, hook->selector, hook->isClassMethod});
  }
  return tweak.pathOf("Manifest.json");
}

/// Reports a syntax error in the generated text at the hook that caused it. The reported position
/// may be too late: an unclosed bracket in one hook's code, for example, is often noticed only in
/// the next hook. So every hook is first converted by itself, and the first failure is reported. If
/// every hook converts by itself, the hook at the reported line is at fault.
void reportGenerated(const OpenedTweak& tweak, const HookSource& generated,
                     const SyntaxError& error, Prober& prober) {
  constexpr std::string_view kBefore = "hookClass(\"\", {}, {\n";
  for (const HookSource::Entry& entry : generated.entries) {
    const std::string alone = std::string(kBefore) +
                              generated.text.substr(entry.begin, entry.end - entry.begin) + "\n});";
    if (const auto own = prober.syntaxErrorIn(alone))
      return printDiagnostic(placeOf(tweak, entry.hook), *own, alone);
  }
  std::optional<std::size_t> hook;
  std::size_t line = 1;
  std::size_t counted = 0;
  for (const HookSource::Entry& entry : generated.entries) {
    line += lineCount(std::string_view(generated.text).substr(counted, entry.begin - counted));
    counted = entry.begin;
    if (line > error.line) break;
    hook = entry.hook;
  }
  printDiagnostic(hook ? placeOf(tweak, *hook) : tweak.pathOf("Manifest.json"), error,
                  generated.text);
}

}  // namespace

std::optional<TweakProcessor::Output> transpile(const OpenedTweak& tweak,
                                                const std::filesystem::path& transpiler) {
  const HookSource generated = generateHookSource(tweak.manifest.hooks());
  const std::string source = TweakProcessor::assembled(generated.text, tweak.script);
  std::optional<SyntaxError> error;
  try {
    return TweakProcessor(transpiler).convert(source);
  } catch (const TweakProcessor::Error& failure) {
    error = syntaxErrorOf(failure);
    if (!error) throw;
  }
  Prober prober(transpiler);
  if (const auto own = prober.syntaxErrorIn(generated.text)) {
    reportGenerated(tweak, generated, *own, prober);
    return std::nullopt;
  }
  const std::size_t linesBefore =
      lineCount(std::string_view(source).substr(0, source.size() - tweak.script.size()));
  if (error->line <= linesBefore) {
    printDiagnostic(tweak.pathOf("Manifest.json"), *error, source);
    return std::nullopt;
  }
  error->line -= linesBefore;
  printDiagnostic(tweak.pathOf("script.objs") + ":" + std::to_string(error->line) + ":" +
                      std::to_string(error->column),
                  *error, tweak.script);
  return std::nullopt;
}

}  // namespace tavlen::cli
