#pragma once

#include <concepts>
#include <functional>
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

/// A manifest of either kind, for users that treat both alike. Copies share what they hold, which
/// never changes.
class TweakManifest {
 public:
  template <TweakManifestRecord Record>
  explicit TweakManifest(Record record)
      : configuration_(record.genericConfiguration()),
        encode_([shared = std::make_shared<const Record>(std::move(record))](Encoder& encoder) {
          tavlen::encode(encoder, *shared);
        }) {}

  const TweakConfiguration& genericConfiguration() const { return configuration_; }
  /// Throws EncodingError.
  void encode(Encoder& encoder) const { encode_(encoder); }

 private:
  TweakConfiguration configuration_;
  std::function<void(Encoder&)> encode_;
};

}  // namespace tavlen
