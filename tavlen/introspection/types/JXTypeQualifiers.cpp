#include "tavlen/introspection/types/JXTypeQualifiers.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace tavlen {

namespace {

struct Qualifier {
  char character;
  std::string_view word;
};

/// In the order of the bits. The run time uses `j` for complex numbers; here it is printed as
/// "volatile" on purpose.
constexpr std::array<Qualifier, 9> kQualifiers = {{{'j', "volatile"},
                                                   {'r', "const"},
                                                   {'n', "in"},
                                                   {'N', "inout"},
                                                   {'o', "out"},
                                                   {'O', "bycopy"},
                                                   {'R', "byref"},
                                                   {'V', "oneway"},
                                                   {'A', "_Atomic"}}};

constexpr JXTypeQualifiers bit(std::size_t index) {
  return JXTypeQualifiers{std::uint64_t{1} << index};
}

/// A table, because every character of every encoding is looked up.
constexpr std::array<JXTypeQualifiers, 256> kByCharacter = [] {
  std::array<JXTypeQualifiers, 256> answers{};
  for (std::size_t i = 0; i < kQualifiers.size(); ++i) {
    answers[static_cast<unsigned char>(kQualifiers[i].character)] = bit(i);
  }
  return answers;
}();

}  // namespace

JXTypeQualifiers JXTypeQualifierForEncoding(char character) {
  return kByCharacter[static_cast<unsigned char>(character)];
}

std::optional<std::string> JXStringForTypeQualifiers(JXTypeQualifiers qualifiers) {
  if (qualifiers == JXTypeQualifiers::none) return std::nullopt;
  std::string words;
  for (std::size_t i = 0; i < kQualifiers.size(); ++i) {
    if ((qualifiers & bit(i)) == JXTypeQualifiers::none) continue;
    if (!words.empty()) words += ' ';
    words += kQualifiers[i].word;
  }
  return words;
}

}  // namespace tavlen
