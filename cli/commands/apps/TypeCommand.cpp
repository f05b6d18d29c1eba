#include <algorithm>
#include <charconv>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <tuple>
#include <vector>

#include "cli/arguments/HookArgument.h"
#include "cli/classes/TypeTree.h"
#include "cli/commands/Commands.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/Diagnostic.h"
#include "cli/terminal/InputLines.h"
#include "cli/terminal/ShownText.h"
#include "tavlen/foundation/json/JSONEncoder.h"
#include "tavlen/foundation/objc/MethodTypes.h"
#include "tavlen/foundation/text/Characters.h"
#include "tavlen/foundation/text/EscapedText.h"
#include "tavlen/introspection/classes/ObjCMethod.h"
#include "tavlen/introspection/types/JXTypeCursor.h"
#include "tavlen/tweaks/ArgumentType.h"
#include "tavlen/tweaks/HookCheck.h"

namespace tavlen::cli {

namespace {

struct Options {
  std::vector<std::string> encodings;
  std::optional<std::string> method;
  bool json = false;
};

/// A method's declaration as `--json` prints it.
struct DeclarationRow {
  std::string method;
  std::string className;
  std::string selector;
  std::string signature;
  std::string declaration;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("method", &DeclarationRow::method),
                      requiredField("class", &DeclarationRow::className),
                      requiredField("selector", &DeclarationRow::selector),
                      requiredField("signature", &DeclarationRow::signature),
                      requiredField("declaration", &DeclarationRow::declaration)};
  }
};

/// The offset of a number of elements that does not fit in 64 bits, which the parser would wrap.
std::optional<std::size_t> overlargeCount(std::string_view encoding) {
  for (std::size_t at = encoding.find('['); at != encoding.npos; at = encoding.find('[', at)) {
    ++at;
    std::uint64_t count = 0;
    const auto [end, error] =
        std::from_chars(encoding.data() + at, encoding.data() + encoding.size(), count);
    if (error == std::errc::result_out_of_range) return at;
  }
  return std::nullopt;
}

/// Prints declarations, and errors of encodings on the standard error stream.
class Answers {
 public:
  explicit Answers(const Options& options) : options_(options) {
    if (options.method) method_ = methodNamed(*options.method);
  }

  /// The answer to an encoding; nothing if it is refused. `line` is its number in the standard
  /// input.
  std::optional<std::string> to(std::string_view encoding, std::optional<std::uint64_t> line) {
    line_ = line;
    return method_ ? declaration(encoding) : type(encoding);
  }
  bool hasErrors() const { return hasErrors_; }

 private:
  /// Prints a message about the encoding, or about the character at the offset `position`.
  void report(bool isError, std::string_view encoding, std::optional<std::size_t> position,
              const std::string& text) {
    const auto before = encoding.substr(0, position.value_or(0));
    const auto characters =
        std::count_if(before.begin(), before.end(), [](char c) { return !isUTF8Continuation(c); });
    const auto column = static_cast<std::uint64_t>(characters) + 1;
    Diagnostic message = {.severity = isError ? Diagnostic::kError : Diagnostic::kWarning,
                          .message = text};
    if (line_) {
      message.file = shownInput("-");
      message.line = line_;
      message.column = column;
    } else if (position) {
      message.message =
          "\"" + std::string(encoding) + "\": character " + std::to_string(column) + ": " + text;
    }
    print(message);
    hasErrors_ = hasErrors_ || isError;
  }

  std::optional<std::string> type(std::string_view encoding) {
    constexpr std::string_view kFirstOfKinds = "cislqCISLQfdBDvtT*#:?@^[{(b";
    JXTypeCursor start(encoding);
    JXRemoveQualifiers(start);
    if (start.isAtEnd() || kFirstOfKinds.find(start.character()) == std::string_view::npos) {
      report(true, encoding, start.position(),
             start.isAtEnd() ? "expected a type" : "no type begins with this character");
      return std::nullopt;
    }
    JXTypeCursor cursor(encoding);
    const std::shared_ptr<JXType> type = JXTypeWithEncoding(cursor);
    if (!cursor.isAtEnd()) {
      const auto types = splitMethodTypes(encoding);
      const bool isMethod = types && types->arguments.size() >= 2 && types->arguments[1] == ":";
      report(
          true, encoding, cursor.position(),
          std::string("the type ends before this character") +
              (isMethod ? "; --method prints the declaration of a method with these types" : ""));
      return std::nullopt;
    }
    // The parser takes the end of the text for any bracket and quote that is missing.
    if (const auto fault = faultInType(encoding)) {
      report(true, encoding, fault,
             *fault == encoding.size() ? "the text ends before the type does"
                                       : "no type has this character here");
      return std::nullopt;
    }
    if (const auto place = overlargeCount(encoding)) {
      report(true, encoding, place, "the number of elements is too large");
      return std::nullopt;
    }
    if (!options_.json) return escapedForTerminal(type->description());
    std::string tree;
    JSONEncoder encoder(tree);
    encodeTypeTree(encoder, type.get());
    encoder.finish();
    return tree;
  }

  std::optional<std::string> declaration(std::string_view encoding) {
    const std::string signature(encoding);
    const auto problem =
        signatureProblem(Hook::with({}, method_->selector, signature, method_->isClassMethod, {}));
    const bool isMalformed = !HookTypes::from(encoding);
    if (problem) report(isMalformed, encoding, {}, *problem);
    if (isMalformed) return std::nullopt;
    const ObjCMethod method(method_->selector, signature, method_->isClassMethod);
    const std::string text = method.plainDeclaration();
    if (!options_.json) return escapedForTerminal(text);
    return shownJSON(
        DeclarationRow{*options_.method, method_->className, method_->selector, signature, text});
  }

  const Options& options_;
  std::optional<MethodIdentity> method_;
  std::optional<std::uint64_t> line_;
  bool hasErrors_ = false;
};

int answerInput(const Options& options) {
  // Print at once before waiting for input; otherwise collect larger pieces.
  constexpr std::size_t kEnough = 1 << 16;
  Answers answers(options);
  std::string out;
  std::uint64_t count = 0;
  const auto print = [&out] {
    if (!out.empty()) printData(out);
    out.clear();
  };
  forEachInputLine(
      [&](std::string_view line) {
        ++count;
        const auto answer = line.empty() ? std::nullopt : answers.to(line, count);
        out += answer.value_or(options.json ? "null" : "");
        out += '\n';
        if (out.size() >= kEnough) print();
      },
      print);
  return answers.hasErrors() ? 1 : 0;
}

int answerArguments(const Options& options) {
  Answers answers(options);
  std::string out = options.json ? "[" : "";
  for (const std::string& encoding : options.encodings) {
    if (options.json && out.size() > 1) out += ',';
    out += answers.to(encoding, std::nullopt).value_or(options.json ? "null" : "");
    if (!options.json) out += '\n';
  }
  printData(options.json ? out + "]\n" : out);
  return answers.hasErrors() ? 1 : 0;
}

}  // namespace

void addTypeCommand(Command app) {
  Command command = app.addCommand("type", "Print Objective-C type encodings as C declarations");
  const auto options = std::make_shared<Options>();
  command.texts("ENCODING", options->encodings,
                "Type encodings; prints a line for each, an empty one for a malformed encoding. "
                "\"-\" alone reads one per line from the standard input");
  command
      .text("--method", options->method,
            "Take each ENCODING as the types of this method, and print its declaration")
      .notEmpty()
      .utf8()
      .check(methodProblem)
      .typeName("METHOD");
  command.flag(
      "--json", options->json,
      "Print a JSON array of type trees, or of methods; with \"-\", one object a line; null for "
      "a malformed encoding");
  command.run([options] {
    const bool readsInput = options->encodings.size() == 1 && options->encodings.front() == "-";
    return readsInput ? answerInput(*options) : answerArguments(*options);
  });
}

}  // namespace tavlen::cli
