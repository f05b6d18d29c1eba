#include "cli/tweaks/Transpilation.h"

#include <charconv>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "cli/arguments/TranspilerOption.h"
#include "cli/terminal/CaretLine.h"
#include "cli/terminal/ShownText.h"
#include "cli/tweaks/CodeValue.h"
#include "cli/tweaks/TextInput.h"
#include "tavlen/foundation/text/Characters.h"
#include "tavlen/tweaks/ManifestCheck.h"

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

/// The index in the document of the hook that has the index `hook` without the empty entries.
std::size_t indexInDocument(const TweakFile::Manifest& manifest, std::size_t hook) {
  std::size_t index = 0;
  for (std::size_t present = 0;; ++index) {
    if (manifest._hooks.at(index) && present++ == hook) return index;
  }
}

/// The error, with the line of `text` and a caret under its column.
Diagnostic diagnosticOf(Diagnostic where, const SyntaxError& error, std::string_view text) {
  std::string message = error.message;
  if (error.beginning) {
    message.append(kBeganAt).append(description(*error.beginning));
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

/// A message about a value of a hook, without the message. `hook` is as for atHook().
Diagnostic atValue(const OpenedTweak& tweak, std::size_t hook, const HookPlace& place) {
  const std::size_t index = indexInDocument(tweak.manifest, hook);
  if (tweak.text) return tweak.text->at(tweak.text->text.placeOf(index, place));
  Diagnostic where = atManifest(tweak);
  where.place = documentPath(tweak.manifest, TweakProblem{.subject = TweakProblem::Subject::hook,
                                                          .index = index,
                                                          .place = place,
                                                          .code = {},
                                                          .text = {}});
  return where;
}

/// A syntax error in the hook's part of the generated text, which begins at the byte `begin` of
/// `text`, whose places `error` has. The user knows that text only as far as it is code of the
/// hook's values: the message leads to the value and to a place in its code, or else to the method.
Diagnostic errorInHook(const OpenedTweak& tweak, std::size_t hook, SyntaxError error,
                       std::string_view text, std::size_t begin) {
  const std::vector<Hook> hooks = tweak.manifest.hooks();
  const std::vector<CodeValue> values = codeValuesOf(hooks.at(hook));
  const auto positionIn = [&](const CodeValue& value, std::optional<TextPosition> place) {
    const auto offset = place ? offsetAt(text, *place) : std::nullopt;
    return offset && *offset >= begin ? value.positionOf(*offset - begin) : std::nullopt;
  };
  const auto beginning = std::exchange(error.beginning, std::nullopt);
  for (const CodeValue& value : values) {
    const auto place = positionIn(value, error.place);
    if (!place) continue;
    error.place = *place;
    error.beginning = positionIn(value, beginning);
    error.message.insert(0, "at " + description(*place) + " of the code: ");
    return diagnosticOf(atValue(tweak, hook, value.place), error, value.code);
  }
  // What is not closed is often noticed only after the code.
  for (const CodeValue& value : values) {
    const auto began = positionIn(value, beginning);
    if (!began && values.size() != 1) continue;
    if (began) error.message.append(kBeganAt).append(description(*began)).append(" of the code");
    return diagnosticOf(atValue(tweak, hook, value.place), error, text);
  }
  return diagnosticOf(atHook(tweak, hook), error, text);
}

/// A syntax error in the generated text, at the hook that caused it. The reported position
/// may be too late: an unclosed bracket in one hook's code, for example, is often noticed only in
/// the next hook. So every hook is first converted by itself, and the first failure is reported. If
/// every hook converts by itself, the hook at the reported line is at fault.
Diagnostic generatedError(const OpenedTweak& tweak, const TweakSource& source, SyntaxError error,
                          Prober& prober) {
  constexpr std::string_view kBefore = "hookClass(\"\", {}, {\n";
  const std::string_view generated = source.generatedText();
  for (const HookSource::Entry& entry : source.entries()) {
    const std::string alone = std::string(kBefore)
                                  .append(generated.substr(entry.begin, entry.end - entry.begin))
                                  .append("\n});");
    if (auto own = prober.syntaxErrorIn(alone))
      return errorInHook(tweak, entry.hook, *std::move(own), alone, kBefore.size());
  }
  const auto lineBegin = offsetAt(generated, {error.place.line, 1});
  const auto* entry = lineBegin ? source.entryBefore(*lineBegin) : nullptr;
  if (entry != nullptr)
    return errorInHook(tweak, entry->hook, std::move(error), generated, entry->begin);
  error.beginning.reset();
  return diagnosticOf(atManifest(tweak), error, generated);
}

/// The syntax error that stopped the conversion of the whole source.
Diagnostic errorAtPlace(const OpenedTweak& tweak, const TweakSource& source,
                        const std::filesystem::path& transpiler, SyntaxError error) {
  Prober prober(transpiler);
  if (auto own = prober.syntaxErrorIn(std::string(source.generatedText())))
    return generatedError(tweak, source, *std::move(own), prober);
  const std::size_t linesBefore = source.linesBeforeScript();
  if (error.place.line <= linesBefore) return diagnosticOf(atManifest(tweak), error, source.text());
  error.place.line -= linesBefore;
  if (error.beginning && error.beginning->line > linesBefore) error.beginning->line -= linesBefore;
  return diagnosticOf(atScript(tweak, error.place), error, tweak.script);
}

/// The result, or a syntax error. Throws TweakProcessor's other errors.
std::variant<TweakProcessor::Output, Diagnostic> converted(const OpenedTweak& tweak,
                                                           const TweakSource& source,
                                                           const std::filesystem::path& transpiler,
                                                           TweakProcessor::Map map) {
  try {
    return TweakProcessor(transpiler).convert(source.text(), map);
  } catch (const TweakProcessor::Error& failure) {
    std::optional<SyntaxError> error = syntaxErrorOf(failure);
    if (!error) throw;
    return errorAtPlace(tweak, source, transpiler, *std::move(error));
  }
}

}  // namespace

Diagnostic atHook(const OpenedTweak& tweak, std::size_t hook) {
  const std::size_t index = indexInDocument(tweak.manifest, hook);
  if (tweak.text) return tweak.text->at(tweak.text->text.hooks.at(index).method);
  Diagnostic where = atManifest(tweak);
  where.place = "hooks[" + std::to_string(index) + "]";
  return where;
}

Diagnostic atHookText(const OpenedTweak& tweak, std::size_t hook, std::size_t offset) {
  const std::vector<Hook> hooks = tweak.manifest.hooks();
  const std::string text = keyedOBJSFunc(hooks.at(hook));
  for (const HookValueText& value : hookValueTexts(hooks.at(hook))) {
    // With the statement around it, of which there is one a line.
    if (offset <= text.rfind('\n', value.begin) || offset >= value.end) continue;
    return atValue(tweak, hook, {HookPlace::Part::value, value.argument, {}});
  }
  return atHook(tweak, hook);
}

Diagnostic atScript(const OpenedTweak& tweak, TextPosition place) {
  Diagnostic where;
  where.file = tweak.text ? tweak.text->scriptPath() : tweak.pathOf(TweakFile::scriptFile);
  where.line = place.line;
  where.column = place.column;
  return where;
}

std::optional<TweakProcessor::Output> transpile(const OpenedTweak& tweak, const TweakSource& source,
                                                const std::filesystem::path& transpiler,
                                                TweakProcessor::Map map) {
  auto result = converted(tweak, source, transpiler, map);
  if (auto* output = std::get_if<TweakProcessor::Output>(&result)) return std::move(*output);
  print(std::get<Diagnostic>(result));
  return std::nullopt;
}

std::optional<TweakProcessor::Output> transpile(const OpenedTweak& tweak,
                                                const std::filesystem::path& transpiler,
                                                TweakProcessor::Map map) {
  return transpile(tweak, TweakSource(tweak.manifest.hooks(), tweak.script), transpiler, map);
}

std::optional<Diagnostic> conversionErrorOf(const TextInput& input) {
  OpenedTweak tweak;
  tweak.manifest = input.text.manifest;
  tweak.script = input.script.value_or(std::string());
  tweak.text = std::make_shared<TextInput>(input);
  try {
    const TweakSource source(tweak.manifest.hooks(), tweak.script);
    auto result = converted(tweak, source, transpilerFolder({}), TweakProcessor::Map::leaveOut);
    if (auto* error = std::get_if<Diagnostic>(&result)) return std::move(*error);
    return std::nullopt;
  } catch (const std::exception& error) {
    return Diagnostic{.severity = Diagnostic::kError, .message = errorText(error)};
  }
}

}  // namespace tavlen::cli
