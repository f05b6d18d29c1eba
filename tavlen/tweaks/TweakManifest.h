#pragma once

#include <concepts>

#include "tavlen/foundation/Coding.h"
#include "tavlen/tweaks/TweakConfiguration.h"

namespace tavlen {

/// What the manifests of tweaks and of collections have in common.
template <class T>
concept TweakManifest = CodedRecord<T> && requires(const T& manifest) {
  { manifest.genericConfiguration() } -> std::same_as<TweakConfiguration>;
};

}  // namespace tavlen
