#pragma once

#include <filesystem>
#include <string>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// An installed app, as a fetcher reports it. A plain value.
struct TAVLEN_API AppListApp {
  /// The bundle identifier.
  std::string bundleID;
  /// The name to show the user.
  std::string displayName;
  /// The app bundle's folder, as a host path.
  std::filesystem::path bundle;

  bool operator==(const AppListApp&) const = default;
};

}  // namespace tavlen
