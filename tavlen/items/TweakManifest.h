#pragma once

#include <concepts>
#include <memory>
#include <utility>

#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/items/TweakConfiguration.h"

namespace tavlen {

/// What the manifests of tweaks and of collections have in common.
template <class T>
concept TweakManifestRecord = CodedRecord<T> && requires(const T& manifest) {
  { manifest.genericConfiguration() } -> std::same_as<TweakConfiguration>;
};

/// A manifest of either kind, for users that treat both alike. Holds a copy of its own, which
/// copies of it share.
class TweakManifest {
 public:
  template <TweakManifestRecord Record>
  explicit TweakManifest(Record record)
      : self_(std::make_shared<const Model<Record>>(std::move(record))) {}

  TweakConfiguration genericConfiguration() const { return self_->genericConfiguration(); }
  void encode(Encoder& encoder) const { self_->encode(encoder); }

 private:
  struct Interface {
    virtual ~Interface() = default;
    virtual TweakConfiguration genericConfiguration() const = 0;
    virtual void encode(Encoder& encoder) const = 0;
  };

  template <class Record>
  struct Model final : Interface {
    explicit Model(Record value) : record(std::move(value)) {}
    TweakConfiguration genericConfiguration() const override {
      return record.genericConfiguration();
    }
    void encode(Encoder& encoder) const override { tavlen::encode(encoder, record); }

    Record record;
  };

  std::shared_ptr<const Interface> self_;
};

}  // namespace tavlen
