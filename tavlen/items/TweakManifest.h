#pragma once

#include <concepts>
#include <functional>
#include <memory>
#include <utility>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/items/TweakConfiguration.h"

namespace tavlen {

/// A manifest of a tweak or a collection.
template <class T>
concept TweakManifestRecord = CodedRecord<T> && requires(const T& manifest) {
  { manifest.genericConfiguration() } -> std::same_as<TweakConfiguration>;
};

/// The manifest of a tweak or of a collection, for callers that treat both in the same way.
/// Immutable; copies share the record.
class TAVLEN_API TweakManifest {
 public:
  /// Takes over `record`.
  template <TweakManifestRecord Record>
  explicit TweakManifest(Record record)
      : configuration_(record.genericConfiguration()),
        encode_([shared = std::make_shared<const Record>(std::move(record))](Encoder& encoder) {
          tavlen::encode(encoder, *shared);
        }) {}

  /// The manifest's settings. Valid as long as this object.
  const TweakConfiguration& genericConfiguration() const { return configuration_; }
  /// Encodes the wrapped record. Throws EncodingError.
  void encode(Encoder& encoder) const { encode_(encoder); }

 private:
  TweakConfiguration configuration_;
  std::function<void(Encoder&)> encode_;
};

}  // namespace tavlen
