#include "cli/tweaks/Transpilation.h"

#include <charconv>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "cli/arguments/TranspilerOption.h"
#include "cli/terminal/CaretLine.h"
#include "cli/terminal/ShownText.h"
#include "cli/tweaks/TextInput.h"
#include "tavlen/foundation/text/Characters.h"

namespace tavlen::cli {

namespace {

constexpr std::string_view kBeganAt = " that began at ";

/// A syntax error as reported by the transpiler.
struct SyntaxError {
  std::string message;  ///< without the places
  TextPosition place;
  /// Where the bracket, message or literal began that the message is about; the message's last
  /// words lead to it.
  std::optional<TextPosition> beginning;
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

bool takeSuffix(std::string_view& text, std::string_view suffix) {
  if (!text.ends_with(suffix)) return false;
  text.remove_suffix(suffix.size());
  return true;
}

/// Removes "12:7" from the end of `text`, and `before` in front of it. Returns nothing, and leaves
/// `text` as it was, where it ends otherwise.
std::optional<TextPosition> takePlace(std::string_view& text, std::string_view before) {
  std::string_view rest = text;
  const std::size_t column = takeNumber(rest);
  if (column == 0 || !takeSuffix(rest, ":")) return std::nullopt;
  const std::size_t line = takeNumber(rest);
  if (line == 0 || !takeSuffix(rest, before)) return std::nullopt;
  text = rest;
  return TextPosition{line, column};
}

/// Parses the transpiler's message, which ends in the position: "unexpected '}' (12:7)", "expected
/// ')' to end the parentheses that began at 11:2 (12:7)".
std::optional<SyntaxError> syntaxErrorOf(const TweakProcessor::Error& error) {
  std::string_view rest = error.message();
  if (error.name() != "SyntaxError" || !takeSuffix(rest, ")")) return std::nullopt;
  const auto place = takePlace(rest, " (");
  if (!place) return std::nullopt;
  const auto beginning = takePlace(rest, kBeganAt);
  return SyntaxError{std::string(rest), *place, beginning};
}

/// A message about the document as a whole, without the message.
Diagnostic atManifest(const OpenedTweak& tweak) {
  Diagnostic where;
  where.file = tweak.text ? tweak.text->file : tweak.pathOf("Manifest.json");
  return where;
}

/// The error, with the line of `text` and a caret under its column.
Diagnostic diagnosticOf(Diagnostic where, const SyntaxError& error, std::string_view text) {
  std::string message = error.message;
  if (error.beginning) {
    message.append(kBeganAt).append(std::to_string(error.beginning->line));
    message.append(":").append(std::to_string(error.beginning->column));
  }
  where.severity = Diagnostic::kError;
  where.code = "syntax-error";
  where.message = std::move(message);
  where.excerpt = caretLine(lineAt(text, error.place.line), error.place.column);
  return where;
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

/// A syntax error in the generated text, at the hook that caused it. The reported position
/// may be too late: an unclosed bracket in one hook's code, for example, is often noticed only in
/// the next hook. So every hook is first converted by itself, and the first failure is reported. If
/// every hook converts by itself, the hook at the reported line is at fault.
Diagnostic generatedError(const OpenedTweak& tweak, const TweakSource& source,
                          const SyntaxError& error, Prober& prober) {
  constexpr std::string_view kBefore = "hookClass(\"\", {}, {\n";
  const std::string_view generated = source.generatedText();
  for (const HookSource::Entry& entry : source.entries()) {
    const std::string alone = std::string(kBefore)
                                  .append(generated.substr(entry.begin, entry.end - entry.begin))
                                  .append("\n});");
    auto own = prober.syntaxErrorIn(alone);
    if (!own) continue;
    // Where something began is a place in the text that `source` prints; the line before the hook
    // is not part of it.
    if (own->beginning && own->beginning->line == 1) own->beginning.reset();
    if (own->beginning) own->beginning->line += lineEndCount(generated.substr(0, entry.begin)) - 1;
    return diagnosticOf(atHook(tweak, entry.hook), *own, alone);
  }
  const auto lineBegin = offsetAt(generated, {error.place.line, 1});
  const auto* entry = lineBegin ? source.entryBefore(*lineBegin) : nullptr;
  return diagnosticOf(entry != nullptr ? atHook(tweak, entry->hook) : atManifest(tweak), error,
                      generated);
}

/// The syntax error that stopped the conversion of the whole source.
Diagnostic errorAtPlace(const OpenedTweak& tweak, const TweakSource& source,
                        const std::filesystem::path& transpiler, SyntaxError error) {
  Prober prober(transpiler);
  if (const auto own = prober.syntaxErrorIn(std::string(source.generatedText())))
    return generatedError(tweak, source, *own, prober);
  const std::size_t linesBefore = source.linesBeforeScript();
  if (error.place.line <= linesBefore) return diagnosticOf(atManifest(tweak), error, source.text());
  error.place.line -= linesBefore;
  if (error.beginning && error.beginning->line > linesBefore) error.beginning->line -= linesBefore;
  return diagnosticOf(atScript(tweak, error.place), error, tweak.script);
}

/// The result, or a syntax error. Throws TweakProcessor's other errors.
std::variant<TweakProcessor::Output, Diagnostic> converted(
    const OpenedTweak& tweak, const TweakSource& source, const std::filesystem::path& transpiler) {
  try {
    return TweakProcessor(transpiler).convert(source.text());
  } catch (const TweakProcessor::Error& failure) {
    std::optional<SyntaxError> error = syntaxErrorOf(failure);
    if (!error) throw;
    return errorAtPlace(tweak, source, transpiler, *std::move(error));
  }
}

}  // namespace

Diagnostic atHook(const OpenedTweak& tweak, std::size_t hook) {
  Diagnostic where = atManifest(tweak);
  // Messages use the index in the file; `hook` does not count empty entries.
  std::size_t present = 0;
  for (std::size_t i = 0; i < tweak.manifest._hooks.size(); ++i) {
    const auto& entry = tweak.manifest._hooks[i];
    if (!entry || present++ != hook) continue;
    if (tweak.text) return tweak.text->at(tweak.text->text.hooks.at(i).method);
    where.place = "hooks[" + std::to_string(i) + "] " + methodText(entry->identity());
    break;
  }
  return where;
}

Diagnostic atScript(const OpenedTweak& tweak, TextPosition place) {
  Diagnostic where;
  where.file = tweak.text ? tweak.text->scriptPath() : tweak.pathOf(TweakFile::scriptFile);
  where.line = place.line;
  where.column = place.column;
  return where;
}

std::optional<TweakProcessor::Output> transpile(const OpenedTweak& tweak, const TweakSource& source,
                                                const std::filesystem::path& transpiler) {
  auto result = converted(tweak, source, transpiler);
  if (auto* output = std::get_if<TweakProcessor::Output>(&result)) return std::move(*output);
  print(std::get<Diagnostic>(result));
  return std::nullopt;
}

std::optional<TweakProcessor::Output> transpile(const OpenedTweak& tweak,
                                                const std::filesystem::path& transpiler) {
  return transpile(tweak, TweakSource(tweak.manifest.hooks(), tweak.script), transpiler);
}

std::optional<Diagnostic> conversionErrorOf(const TextInput& input) {
  OpenedTweak tweak;
  tweak.manifest = input.text.manifest;
  tweak.script = input.script.value_or(std::string());
  tweak.text = std::make_shared<TextInput>(input);
  try {
    const TweakSource source(tweak.manifest.hooks(), tweak.script);
    auto result = converted(tweak, source, transpilerFolder({}));
    if (auto* error = std::get_if<Diagnostic>(&result)) return std::move(*error);
    return std::nullopt;
  } catch (const std::exception& error) {
    return Diagnostic{.severity = Diagnostic::kError, .message = errorText(error)};
  }
}

}  // namespace tavlen::cli
