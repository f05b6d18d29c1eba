#pragma once

#include <filesystem>
#include <utility>

#include "tavlen/bundles/Info.h"

namespace tavlen {

/// Reads what an app bundle says about itself. Keeps nothing: every call reads the files again.
struct InfoManager {
  explicit InfoManager(std::filesystem::path url) : bundleURL(std::move(url)) {}

  /// The bundle's folder, in which "Info.plist" lies.
  std::filesystem::path bundleURL;

  /// Throws std::system_error when the file cannot be read, DecodingError when it does not hold an
  /// Info.
  Info info() const;

  bool operator==(const InfoManager&) const = default;
};

}  // namespace tavlen
