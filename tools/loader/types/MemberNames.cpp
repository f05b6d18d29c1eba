#include "tools/loader/types/MemberNames.h"

#include <algorithm>
#include <array>

namespace tavlen::loader {

namespace {

struct KnownStructure {
  std::string_view name;
  std::size_t count;
  std::array<std::string_view, 6> members;
};

// Foundation's structures have CoreGraphics's names on the device, and their own elsewhere, some
// with an underscore.
constexpr auto kKnown = std::to_array<KnownStructure>({
    {"CGPoint", 2, {"x", "y"}},
    {"CGSize", 2, {"width", "height"}},
    {"CGRect", 2, {"origin", "size"}},
    {"CGVector", 2, {"dx", "dy"}},
    {"CGAffineTransform", 6, {"a", "b", "c", "d", "tx", "ty"}},
    {"UIEdgeInsets", 4, {"top", "left", "bottom", "right"}},
    {"NSDirectionalEdgeInsets", 4, {"top", "leading", "bottom", "trailing"}},
    {"UIOffset", 2, {"horizontal", "vertical"}},
    {"NSRange", 2, {"location", "length"}},
    {"NSPoint", 2, {"x", "y"}},
    {"NSSize", 2, {"width", "height"}},
    {"NSRect", 2, {"origin", "size"}},
});

}  // namespace

std::string memberName(std::string_view structure, std::size_t index, std::size_t count) {
  if (structure.starts_with('_')) structure.remove_prefix(1);
  const auto* const known = std::find_if(
      kKnown.begin(), kKnown.end(),
      [&](const KnownStructure& entry) { return entry.name == structure && entry.count == count; });
  if (known != kKnown.end()) return std::string(known->members.at(index));
  return "field" + std::to_string(index + 1);
}

}  // namespace tavlen::loader
