#include "tavlen/items/GlyphNames.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tavlen {

namespace {

enum Styles : std::uint8_t { kSolid = 1, kRegular = 2, kBrands = 4 };

struct IconRow {
  std::string_view name;
  std::uint8_t styles;
};

constexpr auto kIcons = std::to_array<IconRow>({
#include "tavlen/items/GlyphTable.inc"
});

struct StyleRow {
  std::string_view name;
  Styles style;
};

constexpr std::array<StyleRow, 3> kStyles = {
    {{"solid", kSolid}, {"regular", kRegular}, {"brands", kBrands}}};

constexpr bool precedes(const IconRow& left, const IconRow& right) {
  return left.name < right.name;
}
static_assert(std::is_sorted(kIcons.begin(), kIcons.end(), precedes));

constexpr std::size_t kLongestName = [] {
  std::size_t longest = 0;
  for (const IconRow& icon : kIcons) longest = std::max(longest, icon.name.size());
  return longest;
}();

constexpr std::size_t kMostCorrections = 3;

/// The Damerau-Levenshtein distance (optimal string alignment): how many letters must be inserted,
/// removed, replaced or swapped with their neighbour to turn one text into the other. Both are at
/// most kLongestName + kMostCorrections long.
std::size_t corrections(std::string_view left, std::string_view right) {
  using Row = std::array<std::size_t, kLongestName + kMostCorrections + 1>;
  Row beforeLast{};
  Row last{};
  Row row{};
  for (std::size_t j = 0; j <= right.size(); ++j) last[j] = j;
  for (std::size_t i = 1; i <= left.size(); ++i) {
    row[0] = i;
    for (std::size_t j = 1; j <= right.size(); ++j) {
      const std::size_t replaced = last[j - 1] + (left[i - 1] == right[j - 1] ? 0 : 1);
      row[j] = std::min({replaced, last[j] + 1, row[j - 1] + 1});
      if (i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1]) {
        row[j] = std::min(row[j], beforeLast[j - 2] + 1);
      }
    }
    beforeLast = last;
    last = row;
  }
  return last[right.size()];
}

const IconRow* iconNamed(std::string_view name) {
  const auto* icon = std::lower_bound(kIcons.begin(), kIcons.end(), IconRow{name, 0}, precedes);
  return icon != kIcons.end() && icon->name == name ? icon : nullptr;
}

const IconRow* closestIcon(std::string_view name) {
  if (name.size() > kLongestName + kMostCorrections) return nullptr;
  const IconRow* closest = nullptr;
  std::size_t fewest = kMostCorrections + 1;
  for (const IconRow& icon : kIcons) {
    const std::size_t count = corrections(name, icon.name);
    if (count >= fewest || count * 3 > icon.name.size()) continue;
    fewest = count;
    closest = &icon;
  }
  return closest;
}

bool hasStyle(const IconRow& icon, std::string_view name) {
  return std::any_of(kStyles.begin(), kStyles.end(), [&](const StyleRow& style) {
    return style.name == name && (icon.styles & style.style) != 0;
  });
}

}  // namespace

bool isKnownGlyph(const TweakGlyph& glyph) {
  const IconRow* icon = iconNamed(glyph.icon);
  return icon != nullptr && hasStyle(*icon, glyph.style);
}

std::optional<TweakGlyph> suggestedGlyph(const TweakGlyph& glyph) {
  const IconRow* icon = closestIcon(glyph.icon);
  if (icon == nullptr) return std::nullopt;
  std::string_view style = glyph.style;
  if (!hasStyle(*icon, style)) {
    style = std::find_if(kStyles.begin(), kStyles.end(), [&](const StyleRow& row) {
              return (icon->styles & row.style) != 0;
            })->name;
  }
  return TweakGlyph{std::string(icon->name), std::string(style)};
}

}  // namespace tavlen
