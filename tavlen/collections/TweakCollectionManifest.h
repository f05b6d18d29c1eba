#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "tavlen/collections/TweakCollection.h"
#include "tavlen/foundation/Coding.h"
#include "tavlen/tweaks/TweakColor.h"
#include "tavlen/tweaks/TweakConfiguration.h"
#include "tavlen/tweaks/TweakGlyph.h"
#include "tavlen/tweaks/TweakManifest.h"

namespace tavlen {

class TweakFile;

/// The document of a collection.
struct TweakCollection::Manifest {
  struct Configuration {
    /// The name that is shown; collections are sorted and searched by it.
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
          requiredField("name", &Configuration::name),
          requiredField("color", &Configuration::color),
          requiredField("bundleID", &Configuration::bundleID),
          optionalField("glyph", &Configuration::_glyph),
      };
    }
    bool operator==(const Configuration&) const = default;
  };

  Configuration configuration;
  /// The members' identifiers, in the order in which they are shown.
  std::vector<std::string> _tweaks;

  /// The members, opened in the tweaks directory; those that cannot be opened, and collections, are
  /// left out.
  std::vector<std::shared_ptr<TweakFile>> tweaks() const;
  void setTweaks(std::span<const std::shared_ptr<TweakFile>> tweaks);

  TweakConfiguration genericConfiguration() const { return TweakConfiguration(configuration); }

  static constexpr auto codedFields() {
    return std::tuple{
        requiredField("configuration", &Manifest::configuration),
        requiredField("tweaks", &Manifest::_tweaks),
    };
  }
  bool operator==(const Manifest&) const = default;
};

static_assert(TweakManifestRecord<TweakCollection::Manifest>);

}  // namespace tavlen
