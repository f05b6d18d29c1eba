#pragma once

#include <string>
#include <utility>
#include <variant>

#include "tavlen/foundation/base/API.h"
#include "tavlen/items/ItemConfiguration.h"

namespace tavlen {

class TweakCollection;
class TweakFile;

/// The settings of a tweak or of a collection, for callers that show both in the same way. A value.
class TAVLEN_API TweakConfiguration {
 public:
  /// Wraps `record`, whose `Item` is TweakFile or TweakCollection.
  template <class Item>
  explicit TweakConfiguration(ItemConfiguration<Item> record) : record_(std::move(record)) {}

  /// The displayed name. Valid as long as this object.
  const std::string& name() const {
    return std::visit([](const auto& record) -> const std::string& { return record.name; },
                      record_);
  }
  /// The tint.
  TweakColor color() const {
    return std::visit([](const auto& record) { return record.color; }, record_);
  }
  /// The identifier of the target app. Valid as long as this object.
  const std::string& bundleID() const {
    return std::visit([](const auto& record) -> const std::string& { return record.bundleID; },
                      record_);
  }
  /// The stored glyph, or the default one.
  const TweakGlyph& glyph() const {
    return std::visit([](const auto& record) -> const TweakGlyph& { return record.glyph(); },
                      record_);
  }
  /// Encodes the wrapped record. Throws EncodingError.
  void encode(Encoder& encoder) const {
    std::visit([&](const auto& record) { tavlen::encode(encoder, record); }, record_);
  }

  /// Whether `other` has the same kind and the same value.
  bool isEqualTo(const TweakConfiguration& other) const { return record_ == other.record_; }

 private:
  std::variant<ItemConfiguration<TweakFile>, ItemConfiguration<TweakCollection>> record_;
};

}  // namespace tavlen
