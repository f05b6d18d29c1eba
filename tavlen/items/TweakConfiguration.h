#pragma once

#include <concepts>
#include <memory>
#include <string>
#include <utility>

#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/items/TweakColor.h"
#include "tavlen/items/TweakGlyph.h"

namespace tavlen {

/// What the configurations of tweaks and of collections have in common.
template <class T>
concept TweakConfigurationRecord = CodedRecord<T> && std::equality_comparable<T> &&
    requires(const T& configuration) {
  { configuration.name } -> std::convertible_to<const std::string&>;
  { configuration.color } -> std::convertible_to<TweakColor>;
  { configuration.bundleID } -> std::convertible_to<const std::string&>;
  { configuration.glyph() } -> std::convertible_to<const TweakGlyph&>;
};

/// A configuration of either kind, for users that show both alike. Holds a copy of its own, which
/// copies of it share.
class TweakConfiguration {
 public:
  template <TweakConfigurationRecord Record>
  explicit TweakConfiguration(Record record)
      : self_(std::make_shared<const Model<Record>>(std::move(record))) {}

  const std::string& name() const { return self_->name(); }
  TweakColor color() const { return self_->color(); }
  const std::string& bundleID() const { return self_->bundleID(); }
  const TweakGlyph& glyph() const { return self_->glyph(); }
  void encode(Encoder& encoder) const { self_->encode(encoder); }

  /// Whether `other` holds a configuration of the same type and the same value.
  bool isEqualTo(const TweakConfiguration& other) const { return self_->isEqualTo(*other.self_); }

 private:
  struct Interface {
    virtual ~Interface() = default;
    virtual const std::string& name() const = 0;
    virtual TweakColor color() const = 0;
    virtual const std::string& bundleID() const = 0;
    virtual const TweakGlyph& glyph() const = 0;
    virtual void encode(Encoder& encoder) const = 0;
    virtual bool isEqualTo(const Interface& other) const = 0;
  };

  template <class Record>
  struct Model final : Interface {
    explicit Model(Record value) : record(std::move(value)) {}
    const std::string& name() const override { return record.name; }
    TweakColor color() const override { return record.color; }
    const std::string& bundleID() const override { return record.bundleID; }
    const TweakGlyph& glyph() const override { return record.glyph(); }
    void encode(Encoder& encoder) const override { tavlen::encode(encoder, record); }
    bool isEqualTo(const Interface& other) const override {
      const auto* same = dynamic_cast<const Model*>(&other);
      return same != nullptr && same->record == record;
    }

    Record record;
  };

  std::shared_ptr<const Interface> self_;
};

}  // namespace tavlen
