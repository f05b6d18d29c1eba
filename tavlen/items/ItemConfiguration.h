#pragma once

#include <optional>
#include <string>
#include <tuple>
#include <utility>

#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/items/TweakColor.h"
#include "tavlen/items/TweakGlyph.h"

namespace tavlen {

/// How a stored item is shown, and what app it is for. `Item` is the kind of the item: the settings
/// of a tweak and those of a collection are coded alike and are two types all the same.
template <class Item>
struct ItemConfiguration {
  /// The name that is shown; items are sorted and searched by it.
  std::string name;
  TweakColor color = TweakColor::lightGreen;
  /// The identifier of the target app.
  std::string bundleID;
  std::optional<TweakGlyph> _glyph;

  /// The stored glyph, or the default one.
  const TweakGlyph& glyph() const { return _glyph ? *_glyph : TweakGlyph::default_(); }
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
