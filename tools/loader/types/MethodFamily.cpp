#include "tools/loader/types/MethodFamily.h"

#include <algorithm>
#include <array>

namespace tavlen::loader {

namespace {

/// Whether the name begins with the word: "initWithName:" with "init", "initialize" not.
bool isOfFamily(std::string_view name, std::string_view word) {
  if (!name.starts_with(word)) return false;
  const std::string_view rest = name.substr(word.size());
  return rest.empty() || rest.front() < 'a' || rest.front() > 'z';
}

}  // namespace

MethodFamily MethodFamily::of(std::string_view selector, bool isClassMethod,
                              const CallSignature& signature) {
  constexpr auto kCounting = std::to_array<std::string_view>(
      {"retain", "release", "autorelease", "retainCount", "dealloc"});
  constexpr auto kOwned = std::to_array<std::string_view>({"alloc", "new", "copy", "mutableCopy"});
  MethodFamily family;
  family.countsReferences =
      !isClassMethod && std::find(kCounting.begin(), kCounting.end(), selector) != kCounting.end();
  if (signature.result().kind() != ValueType::Kind::object) return family;
  while (selector.starts_with('_')) selector.remove_prefix(1);
  family.takesReceiver = !isClassMethod && isOfFamily(selector, "init");
  family.allocates = isClassMethod && isOfFamily(selector, "alloc");
  family.givesResult =
      family.takesReceiver || std::any_of(kOwned.begin(), kOwned.end(), [&](std::string_view word) {
        return isOfFamily(selector, word);
      });
  return family;
}

}  // namespace tavlen::loader
