#include "tavlen/introspection/classes/ObjCMethod.h"

#include <algorithm>

#include "tavlen/foundation/objc/MethodSignature.h"
#include "tavlen/introspection/types/JXType.h"

namespace tavlen {

namespace {

constexpr std::string_view kNoBreakSpace = "\xC2\xA0";
/// The receiver and the selector, which declarations do not show.
constexpr std::size_t kHiddenArguments = 2;

/// Builds a declaration piece by piece.
class DeclarationText {
 public:
  DeclarationText(const MethodSignature& signature, const StyledText::Color& typeColor,
                  const StyledText::Color& foregroundColor, JXTypeBodies bodies, StyledText& text)
      : signature_(signature),
        typeColor_(typeColor),
        color_(foregroundColor),
        bodies_(bodies),
        text_(text) {}

  void append(std::string_view selector) {
    text_.append(" ", color_);
    appendType(signature_.methodReturnType());
    appendParts(selector);
    for (; argument_ < signature_.numberOfArguments(); ++argument_) {
      text_.append(", ", color_);
      appendType(signature_.getArgumentTypeAtIndex(argument_));
    }
  }

 private:
  void appendType(const std::string& encoding) {
    text_.append("(", color_);
    if (const auto type = JXTypeForEncoding(encoding))
      text_.append(type->description(bodies_), typeColor_);
    text_.append(")", color_);
  }

  void appendParts(std::string_view selector) {
    while (!selector.empty()) {
      const std::size_t colon = selector.find(':');
      const std::size_t length = std::min(colon, selector.size() - 1) + 1;
      text_.append(selector.substr(0, length), color_);
      selector.remove_prefix(length);
      if (colon == std::string_view::npos) return;
      if (argument_ < signature_.numberOfArguments()) {
        appendType(signature_.getArgumentTypeAtIndex(argument_++));
      }
      if (!selector.empty()) text_.append(" ", color_);
    }
  }

  const MethodSignature& signature_;
  const StyledText::Color& typeColor_;
  const StyledText::Color& color_;
  JXTypeBodies bodies_;
  StyledText& text_;
  std::size_t argument_ = kHiddenArguments;
};

}  // namespace

StyledText ObjCMethod::description(const StyledText::Color& typeColor,
                                   const StyledText::Color& foregroundColor,
                                   const StyledText::Font& font, JXTypeBodies bodies) const {
  StyledText text;
  text.append(isClassMethod ? "+" : "-", foregroundColor);
  text.append(kNoBreakSpace, foregroundColor);
  if (const auto signature = MethodSignature::signatureWithObjCTypes(encoding)) {
    DeclarationText(*signature, typeColor, foregroundColor, bodies, text).append(selector);
  } else {
    text.append(selector, foregroundColor);
  }
  text.setFont(font);
  return text;
}

std::string ObjCMethod::description(JXTypeBodies bodies) const {
  return description({}, {}, {}, bodies).plain();
}

std::string ObjCMethod::plainDeclaration(JXTypeBodies bodies) const {
  std::string declaration = description(bodies);
  const std::size_t space = declaration.find(kNoBreakSpace);
  const bool isFollowed = declaration.compare(space + kNoBreakSpace.size(), 1, " ") == 0;
  return declaration.replace(space, kNoBreakSpace.size(), isFollowed ? "" : " ");
}

}  // namespace tavlen
