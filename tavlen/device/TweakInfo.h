#pragma once

#include <optional>
#include <string>

namespace tavlen {

/// The record of the tweak that is installed for an app. Any member may be absent in a record that
/// was read.
struct TweakInfo {
  std::optional<std::string> bundleID;
  std::optional<std::string> tweakID;
  /// The icon that replaces the app's own, as the text of a file URL.
  std::optional<std::string> customIconURL;

  bool operator==(const TweakInfo&) const = default;
};

}  // namespace tavlen
