#include "tavlen/introspection/headers/detail/MethodDeclarations.h"

#include <optional>
#include <span>
#include <string_view>
#include <unordered_set>

#include "tavlen/foundation/objc/MethodTypes.h"
#include "tavlen/introspection/headers/detail/Identifiers.h"
#include "tavlen/introspection/headers/detail/SourceText.h"

namespace tavlen {

namespace {

using Encodings = std::span<const std::string_view>;

/// The arguments that a declaration shows: without the receiver and the selector.
Encodings shownArguments(const MethodTypes& types) {
  constexpr std::size_t kHidden = 2;
  const Encodings all = types.arguments;
  return all.subspan(std::min(kHidden, all.size()));
}

std::string_view sign(const ObjCMethod& method) { return method.isClassMethod ? "+ " : "- "; }

/// What is known of a method that has no declaration.
std::string undeclared(const ObjCMethod& method) {
  std::string text(sign(method));
  text += std::string_view(method.selector);
  text += ", types \"";
  text += std::string_view(method.encoding);
  text += '"';
  return sourceComment(text);
}

/// Writes declarations of methods.
class MethodWriter {
 public:
  MethodWriter(std::string& out, TypeDeclarations& types, TypeDeclarations::Names& names)
      : out_(out), types_(types), names_(names) {}

  void append(const ObjCMethod& method) {
    const std::string_view selector = method.selector;
    const auto types = splitMethodTypes(method.encoding);
    auto& declared = method.isClassMethod ? classSelectors_ : instanceSelectors_;
    if (!types || !isDeclarableSelector(selector) || !declared.insert(selector).second) {
      out_ += undeclared(method) + "\n";
      return;
    }
    out_ += sign(method);
    out_ += '(';
    out_ += types_.result(types->result, names_);
    out_ += ')';
    appendParts(selector, shownArguments(*types));
    out_ += ";\n";
  }

 private:
  void appendParts(std::string_view selector, Encodings arguments) {
    std::size_t count = 0;
    for (std::size_t colon; (colon = selector.find(':')) != std::string_view::npos;) {
      if (count > 0) out_ += ' ';
      out_ += selector.substr(0, colon + 1);
      selector.remove_prefix(colon + 1);
      // Vectors have an empty encoding, so there may be fewer types than arguments.
      appendArgument(count < arguments.size() ? arguments[count] : std::string_view());
      out_ += "arg" + std::to_string(++count);
    }
    out_ += selector;
    if (count < arguments.size()) appendSurplus(arguments.subspan(count));
  }

  void appendArgument(std::string_view encoding) {
    out_ += '(';
    out_ += types_.argument(encoding, names_);
    out_ += ')';
  }

  /// Types for which the selector has no part.
  void appendSurplus(Encodings arguments) {
    std::string text = "and";
    for (const std::string_view encoding : arguments) {
      text += ' ';
      text += encoding;
    }
    out_ += ' ' + sourceComment(text);
  }

  std::string& out_;
  TypeDeclarations& types_;
  TypeDeclarations::Names& names_;
  std::unordered_set<std::string_view> instanceSelectors_;
  std::unordered_set<std::string_view> classSelectors_;
};

}  // namespace

void appendMethodDeclarations(std::string& out, const ObjCClass::Methods& methods,
                              TypeDeclarations& types, TypeDeclarations::Names& names) {
  MethodWriter writer(out, types, names);
  for (const auto& method : methods) writer.append(*method);
}

}  // namespace tavlen
