#pragma once

#include <optional>
#include <string>
#include <tuple>
#include <utility>

#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/items/TweakColor.h"
#include "tavlen/items/TweakGlyph.h"

namespace tavlen {

/// How a stored item is shown, and which app it is for. `Item` is the kind of item. Tweaks and
/// collections code their settings in the same way, but the two types do not mix.
template <class Item>
struct ItemConfiguration {
  /// The displayed name; items are sorted and searched by it.
  std::string name;
  /// The tint.
  TweakColor color = TweakColor::lightGreen;
  /// The identifier of the target app.
  std::string bundleID;
  /// The glyph as stored; see glyph().
  std::optional<TweakGlyph> _glyph;

  /// The stored glyph, or the default one.
  const TweakGlyph& glyph() const { return _glyph ? *_glyph : TweakGlyph::default_(); }
  /// Stores `glyph`, even if it is the default one.
  void setGlyph(TweakGlyph glyph) { _glyph = std::move(glyph); }

  static constexpr auto codedFields() {
    return std::tuple{
        requiredField("name", &ItemConfiguration::name),
        requiredField("color", &ItemConfiguration::color),
        requiredField("bundleID", &ItemConfiguration::bundleID),
        optionalField("glyph", &ItemConfiguration::_glyph),
    };
  }
  bool operator==(const ItemConfiguration&) const = default;
};

}  // namespace tavlen
