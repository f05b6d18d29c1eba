#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/image/Image.h"

namespace tavlen {

/// The values that a list shows of an app, without a handle on the app.
struct TAVLEN_API PseudoApp {
  /// The bundle identifier.
  std::string bundleID;
  /// The name to show.
  std::string displayName;
  /// The app bundle's folder.
  std::filesystem::path bundle;
  /// The icon, if there is one.
  std::optional<Image> icon;

  bool operator==(const PseudoApp&) const = default;
};

}  // namespace tavlen
