#pragma once

#include <filesystem>
#include <string>

namespace tavlen {

/// An app as a fetcher reports it.
struct AppListApp {
  std::string bundleID;
  /// The name to show.
  std::string displayName;
  /// The app bundle's folder.
  std::filesystem::path bundle;

  bool operator==(const AppListApp&) const = default;
};

}  // namespace tavlen
