#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "tavlen/foundation/image/Image.h"

namespace tavlen {

/// What a list shows of an app, apart from the app itself.
struct PseudoApp {
  std::string bundleID;
  std::string displayName;
  /// The app bundle's folder.
  std::filesystem::path bundle;
  std::optional<Image> icon;

  bool operator==(const PseudoApp&) const = default;
};

}  // namespace tavlen
