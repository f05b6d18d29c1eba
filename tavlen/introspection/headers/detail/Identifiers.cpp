#include "tavlen/introspection/headers/detail/Identifiers.h"

#include <algorithm>
#include <unordered_set>

#include "tavlen/foundation/text/Characters.h"

namespace tavlen {

namespace {

using Words = std::unordered_set<std::string_view>;

/// The words of `text`, which has a blank after each.
Words wordsIn(std::string_view text) {
  Words words;
  for (std::size_t end; (end = text.find(' ')) != std::string_view::npos;) {
    words.insert(text.substr(0, end));
    text.remove_prefix(end + 1);
  }
  return words;
}

/// Reserved words that selectors may contain: those of C, and those that Objective-C reserves in
/// the types of methods.
const Words& reservedWords() {
  static const Words words = wordsIn(
      "Class SEL asm auto break bycopy byref case char const continue default do double "
      "else enum extern float for goto id if in inline inout int long nonnull "
      "null_unspecified nullable oneway out register restrict return short signed sizeof "
      "static struct switch typedef typeof union unsigned void volatile while ");
  return words;
}

/// Words that selectors cannot contain either, or only with some compilers; and macros that
/// compilers predefine.
const Words& forbiddenWords() {
  static const Words words = wordsIn(
      "IBAction IBInspectable IBOutlet IBOutletCollection IB_DESIGNABLE _Accum _Alignas "
      "_Alignof _Atomic _BitInt _Bool _Complex _Decimal128 _Decimal32 _Decimal64 _ExtInt "
      "_Float16 _Fract _Generic _Imaginary _LP64 _Nonnull _Noreturn _Null_unspecified "
      "_Nullable _Nullable_result _Pragma _Sat _Static_assert _Thread_local __alignof "
      "__amd64 __arm64 __asm __attribute __auto_type __autoreleasing __bf16 __block "
      "__bridge __bridge_retain __bridge_retained __bridge_transfer __cdecl __complex "
      "__const __contravariant __covariant __declspec __fastcall __float128 __forceinline "
      "__fp16 __ibm128 __imag __inline __int128 __int128_t __k8 __kindof __linux __nonnull "
      "__null __null_unspecified __nullable __objc_no __objc_yes __pascal __real __regcall "
      "__restrict __seg_fs __seg_gs __signed __stdcall __strong __thiscall __thread "
      "__typeof __uint128_t __unaligned __unix __unsafe_unretained __vectorcall __volatile "
      "__weak __x86_64 i386 linux unix ");
  return words;
}

constexpr bool isWordCharacter(char c) { return isLetter(c) || isDigit(c) || c == '_' || c == '$'; }

bool isWord(std::string_view name) {
  return !name.empty() && !isDigit(name.front()) &&
         std::all_of(name.begin(), name.end(), isWordCharacter);
}

/// Whether `name` has the form of names that compilers keep for themselves: `__LINE__`,
/// `__ARM_NEON`, `__has_feature`.
bool isCompilerName(std::string_view name) {
  if (!name.starts_with("__")) return false;
  const auto isLower = [](char c) { return c >= 'a' && c <= 'z'; };
  return name.ends_with("__") || name.starts_with("__builtin_") || name.starts_with("__has_") ||
         name.starts_with("__is_") || std::none_of(name.begin(), name.end(), isLower);
}

/// Whether `name` is a word that selectors may contain.
bool isFreeWord(std::string_view name) {
  return isWord(name) && !isCompilerName(name) && !forbiddenWords().contains(name);
}

/// Makes a word of `name`: one `_` for each run of other characters.
std::string wordFrom(std::string_view name) {
  constexpr std::size_t kMost = 128;  // C++ names of templates can have thousands
  std::string word;
  for (const char c : name) {
    if (word.size() == kMost) break;
    if (isWordCharacter(c)) {
      word += c;
    } else if (word.empty() || word.back() != '_') {
      word += '_';
    }
  }
  if (word.empty() || isDigit(word.front())) word.insert(word.begin(), '_');
  // Two underscores begin the names of compilers.
  while (word.starts_with("__")) word.erase(word.begin());
  if (!isDeclarableName(word)) word += '_';
  return word;
}

}  // namespace

bool isDeclarableName(std::string_view name) {
  return isFreeWord(name) && !reservedWords().contains(name);
}

std::string declarableName(std::string_view name) {
  return isDeclarableName(name) ? std::string(name) : wordFrom(name);
}

bool isDeclarableSelector(std::string_view selector) {
  if (selector.find(':') == std::string_view::npos) return isFreeWord(selector);
  if (!selector.ends_with(':')) return false;
  while (!selector.empty()) {
    const std::size_t colon = selector.find(':');
    if (colon > 0 && !isFreeWord(selector.substr(0, colon))) return false;
    selector.remove_prefix(colon + 1);
  }
  return true;
}

std::string UniqueNames::add(std::string_view name) { return add(name, std::string(name)); }

std::string UniqueNames::addIgnoringCase(std::string_view name) {
  return add(name, lowercased(name));
}

std::string UniqueNames::add(std::string_view name, const std::string& key) {
  const auto [entry, isNew] = nextNumbers_.try_emplace(key, 2);
  if (isNew) return std::string(name);
  // Adding others may move the entry's bucket, but not the entry.
  for (unsigned& number = entry->second;;) {
    const std::string suffix = separator_ + std::to_string(number++);
    if (nextNumbers_.try_emplace(key + suffix, 2).second) return std::string(name) + suffix;
  }
}

IdentifierTable::IdentifierTable(std::initializer_list<std::string_view> taken) {
  for (const std::string_view name : taken) taken_.add(name);
}

const std::string& IdentifierTable::of(std::string_view name) {
  const auto [entry, isNew] = identifiers_.try_emplace(std::string(name));
  if (isNew) entry->second = taken_.add(declarableName(name));
  return entry->second;
}

std::string IdentifierTable::add(std::string_view name) {
  const bool isFirst = !identifiers_.contains(std::string(name));
  const std::string& first = of(name);
  return isFirst ? first : taken_.add(first);
}

}  // namespace tavlen
