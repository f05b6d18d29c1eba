#include "tavlen/items/GlyphNames.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "tavlen/foundation/text/Suggestion.h"

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

constexpr auto kIconNames = [] {
  std::array<std::string_view, kIcons.size()> names;
  std::transform(kIcons.begin(), kIcons.end(), names.begin(),
                 [](const IconRow& icon) { return icon.name; });
  return names;
}();

const IconRow* iconNamed(std::string_view name) {
  const auto* icon = std::lower_bound(kIcons.begin(), kIcons.end(), IconRow{name, 0}, precedes);
  return icon != kIcons.end() && icon->name == name ? icon : nullptr;
}

bool hasStyle(const IconRow& icon, std::string_view name) {
  return std::any_of(kStyles.begin(), kStyles.end(), [&](const StyleRow& style) {
    return style.name == name && (icon.styles & style.style) != 0;
  });
}

/// `style` if the icon has it, or else the icon's first style.
std::string_view styleOf(const IconRow& icon, std::string_view style) {
  if (hasStyle(icon, style)) return style;
  return std::find_if(kStyles.begin(), kStyles.end(),
                      [&](const StyleRow& row) { return (icon.styles & row.style) != 0; })
      ->name;
}

}  // namespace

std::vector<TweakGlyph> knownGlyphs() {
  std::vector<TweakGlyph> glyphs;
  for (const IconRow& icon : kIcons) {
    for (const StyleRow& style : kStyles) {
      if ((icon.styles & style.style) != 0)
        glyphs.push_back({std::string(icon.name), std::string(style.name)});
    }
  }
  return glyphs;
}

bool isKnownGlyph(const TweakGlyph& glyph) {
  const IconRow* icon = iconNamed(glyph.icon);
  return icon != nullptr && hasStyle(*icon, glyph.style);
}

std::optional<TweakGlyph> suggestedGlyph(const TweakGlyph& glyph) {
  const auto name = closestName(glyph.icon, kIconNames);
  if (!name) return std::nullopt;
  return TweakGlyph{std::string(*name), std::string(styleOf(*iconNamed(*name), glyph.style))};
}

TweakGlyph glyphFromText(std::string_view text) {
  const std::size_t slash = text.find('/');
  const std::string icon(text.substr(0, slash));
  if (slash != std::string_view::npos) return {icon, std::string(text.substr(slash + 1))};
  const std::string_view style = TweakGlyph::default_().style;
  const IconRow* known = iconNamed(icon);
  return {icon, std::string(known == nullptr ? style : styleOf(*known, style))};
}

std::string glyphText(const TweakGlyph& glyph) { return glyph.icon + "/" + glyph.style; }

}  // namespace tavlen
