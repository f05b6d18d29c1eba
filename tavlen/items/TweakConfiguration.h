#pragma once

#include <string>
#include <utility>
#include <variant>

#include "tavlen/items/ItemConfiguration.h"

namespace tavlen {

class TweakCollection;
class TweakFile;

/// A configuration of either kind, for users that show both alike. A value.
class TweakConfiguration {
 public:
  template <class Item>
  explicit TweakConfiguration(ItemConfiguration<Item> record) : record_(std::move(record)) {}

  const std::string& name() const {
    return std::visit([](const auto& record) -> const std::string& { return record.name; },
                      record_);
  }
  TweakColor color() const {
    return std::visit([](const auto& record) { return record.color; }, record_);
  }
  /// The identifier of the target app.
  const std::string& bundleID() const {
    return std::visit([](const auto& record) -> const std::string& { return record.bundleID; },
                      record_);
  }
  /// The stored glyph, or the default one.
  const TweakGlyph& glyph() const {
    return std::visit([](const auto& record) -> const TweakGlyph& { return record.glyph(); },
                      record_);
  }
  /// Throws EncodingError.
  void encode(Encoder& encoder) const {
    std::visit([&](const auto& record) { tavlen::encode(encoder, record); }, record_);
  }

  /// Whether `other` is a configuration of the same kind and the same value.
  bool isEqualTo(const TweakConfiguration& other) const { return record_ == other.record_; }

 private:
  std::variant<ItemConfiguration<TweakFile>, ItemConfiguration<TweakCollection>> record_;
};

}  // namespace tavlen
