#include "tavlen/foundation/json/detail/JSONStringWriter.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

namespace tavlen {

namespace {

constexpr std::size_t kBlockBytes = 16;

#if defined(__GNUC__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__  // clang defines them, too

/// Sixteen bytes, which the compiler keeps in a vector register, of SSE2 or NEON; and the same as
/// two words. Memory would be slower between them: its two halves cannot be written and then read
/// as one without waiting.
using Block = std::uint8_t __attribute__((vector_size(kBlockBytes)));
using Words = std::uint64_t __attribute__((vector_size(kBlockBytes)));

template <class Word>
std::uint64_t wordAt(const char* bytes) {
  Word word = 0;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

/// The `count` bytes at `bytes`, one to fifteen, and zeros. Overlapping loads take fewer steps than
/// a load for each byte.
Block partialBlock(const char* bytes, std::size_t count) {
  std::uint64_t low = 0;
  std::uint64_t high = 0;
  if (count >= 8) {
    low = wordAt<std::uint64_t>(bytes);
    // In two steps: a shift by 64 is undefined.
    high = wordAt<std::uint64_t>(bytes + count - 8) >> 8 >> (8 * (15 - count));
  } else if (count >= 4) {
    low = wordAt<std::uint32_t>(bytes) | wordAt<std::uint32_t>(bytes + count - 4)
                                             << (8 * (count - 4));
  } else {
    for (const std::size_t i : {std::size_t{0}, count / 2, count - 1})
      low |= wordAt<std::uint8_t>(bytes + i) << (8 * i);
  }
  return reinterpret_cast<Block>(Words{low, high});
}

/// Copies bytes that need no escape, a block at a time.
class PlainCopy {
 public:
  /// Copies a whole block, and returns how many of its bytes come before one to escape.
  std::size_t copyBlock(char* to, const char* from) {
    Block block;
    std::memcpy(&block, from, sizeof block);
    return copy(to, block);
  }

  /// The same for the `count` bytes at `from`, fewer than a block.
  std::size_t copyPart(char* to, const char* from, std::size_t count) {
    return copy(to, partialBlock(from, count));  // a zero, which needs an escape, ends them
  }

  bool isASCII() const {
    constexpr std::uint64_t kHighs = 0x8080808080808080;
    const auto all = reinterpret_cast<Words>(all_);
    return ((all[0] | all[1]) & kHighs) == 0;
  }

 private:
  std::size_t copy(char* to, Block block) {
    std::memcpy(to, &block, sizeof block);
    all_ |= block;
    const auto marks =
        reinterpret_cast<Words>((block < std::uint8_t{0x20}) | (block == std::uint8_t{'"'}) |
                                (block == std::uint8_t{'\\'}) | (block == std::uint8_t{'/'}));
    if ((marks[0] | marks[1]) == 0) return kBlockBytes;
    const int bits = marks[0] != 0 ? std::countr_zero(marks[0]) : 64 + std::countr_zero(marks[1]);
    return static_cast<std::size_t>(bits) / 8;
  }

  Block all_{};  ///< all bytes, ORed
};

#else

/// The same without vectors, a byte at a time.
class PlainCopy {
 public:
  std::size_t copyBlock(char* to, const char* from) { return copyPart(to, from, kBlockBytes); }

  std::size_t copyPart(char* to, const char* from, std::size_t count) {
    std::size_t i = 0;
    for (; i < count && !needsEscape(from[i]); ++i) {
      to[i] = from[i];
      all_ |= static_cast<unsigned char>(from[i]);
    }
    return i;
  }

  bool isASCII() const { return all_ < 0x80; }

 private:
  static bool needsEscape(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == '"' || c == '\\' || c == '/';
  }

  unsigned all_ = 0;
};

#endif

/// The letters of the short escapes, by the byte; 0 for bytes without one.
constexpr auto kShortEscapes = [] {
  std::array<char, '\\' + 1> letters{};
  letters['"'] = '"';
  letters['\\'] = '\\';
  letters['/'] = '/';
  letters['\b'] = 'b';
  letters['\t'] = 't';
  letters['\n'] = 'n';
  letters['\f'] = 'f';
  letters['\r'] = 'r';
  return letters;
}();

char* writeEscape(char* to, char c) {
  constexpr std::string_view kHex = "0123456789abcdef";
  const auto byte = static_cast<unsigned char>(c);
  *to++ = '\\';
  if (const char letter = kShortEscapes[byte]; letter != 0) {
    *to++ = letter;
    return to;
  }
  for (const char digit : {'u', '0', '0', kHex[byte >> 4], kHex[byte & 0xF]}) *to++ = digit;
  return to;
}

}  // namespace

char* writeJSONCharacters(char* to, std::string_view text, bool& isASCII) {
  PlainCopy plain;
  const char* from = text.data();
  const char* const end = from + text.size();
  const char* unescaped = from;  // from here on, what was written is what was read
  while (from != end) {
    const auto left = static_cast<std::size_t>(end - from);
    std::size_t copied = 0;
    if (left >= kBlockBytes) {
      copied = plain.copyBlock(to, from);
    } else if (static_cast<std::size_t>(end - unescaped) >= kBlockBytes) {
      // The last block, with bytes that were copied before: no branches for the length of the rest.
      const std::size_t again = kBlockBytes - left;
      copied = plain.copyBlock(to - again, end - kBlockBytes) - again;
    } else {
      copied = plain.copyPart(to, from, left);
    }
    from += copied;
    to += copied;
    if (copied == kBlockBytes || from == end) continue;
    to = writeEscape(to, *from++);
    unescaped = from;
  }
  isASCII = isASCII && plain.isASCII();
  return to;
}

}  // namespace tavlen
