#include "tavlen/introspection/types/JXTypeBasic.h"

#include <array>
#include <string_view>

#include "tavlen/introspection/types/JXTypeCursor.h"

namespace tavlen {

namespace {

constexpr std::size_t kCharacters = 256;

/// All characters, in order.
constexpr std::array<char, kCharacters> kTexts = [] {
  std::array<char, kCharacters> texts{};
  for (std::size_t i = 0; i < kCharacters; ++i) texts[i] = static_cast<char>(i);
  return texts;
}();

/// The encoding of the character with that index; empty for the index after the last.
SharedText textOf(std::size_t index) {
  const std::string_view texts(kTexts.data(), kTexts.size());
  return SharedText::lasting(texts.substr(index, 1));
}

}  // namespace

bool JXTypeBasic::supportsEncoding(char character) {
  return std::string_view("{(*@[^b").find(character) == std::string_view::npos;
}

std::shared_ptr<JXTypeBasic> JXTypeBasic::initWithEncoding(JXTypeCursor& cursor,
                                                           JXTypeQualifiers qualifiers) {
  const std::size_t index =
      cursor.isAtEnd() ? kCharacters : static_cast<unsigned char>(cursor.character());
  cursor.advance();
  if (qualifiers != JXTypeQualifiers::none) {
    return std::make_shared<JXTypeBasic>(Key(), textOf(index), qualifiers);
  }
  // Most nodes of most trees are of this class, so there is one static node for each character.
  static const auto& plain = *new auto([] {
    std::array<std::shared_ptr<JXTypeBasic>, kCharacters + 1> nodes;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
      auto* node = new JXTypeBasic(Key(), textOf(i), JXTypeQualifiers::none);
      nodes[i] = std::shared_ptr<JXTypeBasic>(std::shared_ptr<void>(), node);
    }
    return nodes;
  }());
  return plain[index];
}

std::shared_ptr<JXTypeBasic> JXTypeBasic::initWithPrimitiveType(JXPrimitiveType type) {
  const char character = JXEncodingForPrimitiveType(type);
  JXTypeCursor cursor(std::string_view(&character, 1));
  return initWithEncoding(cursor, JXTypeQualifiers::none);
}

JXPrimitiveType JXTypeBasic::primitiveType() const {
  return encoding().empty() ? JXPrimitiveType::void_
                            : JXPrimitiveTypeForEncoding(encoding().front());
}

void JXTypeBasic::appendOwnHead(std::string& out, bool padding, JXTypeBodies /*bodies*/) const {
  out += JXNameForPrimitiveType(primitiveType());
  if (padding) out += ' ';
}

}  // namespace tavlen
