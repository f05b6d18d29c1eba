#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include "tavlen/foundation/base/Limits.h"
#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/foundation/files/URL.h"

namespace tavlen {

/// The record of the tweak that is installed for an app, stored as a keyed archive. Any member may
/// be absent in a record that was read.
struct TweakInfo {
  /// The name of the class in archives.
  static constexpr std::string_view archivedClassName = "TweakInfo";
  /// In bytes. A larger file is none of an icon: it counts as one that cannot be read.
  static constexpr std::uintmax_t kLargestIcon = limits::kIconFileBytes;

  TweakInfo() = default;
  TweakInfo(std::string appID, std::string tweak)
      : bundleID(std::move(appID)), tweakID(std::move(tweak)) {}

  std::optional<std::string> bundleID;
  std::optional<std::string> tweakID;
  /// The icon that replaces the app's own, by its path on the device.
  std::optional<URL> customIconURL;

  /// Whether the home screen must be restarted when this record takes the place of `other`: when
  /// one of them alone has an icon, or the bytes of the two icons differ. Only file URLs are read,
  /// through the device root; two icons that cannot be read do not differ. No record is a record
  /// without an icon.
  bool shouldRespringAfterChangingFromOther(const std::optional<TweakInfo>& other) const;

  static constexpr auto codedFields() {
    return std::tuple{
        optionalField("bundleID", &TweakInfo::bundleID),
        optionalField("tweakID", &TweakInfo::tweakID),
        optionalField("customIconURL", &TweakInfo::customIconURL),
    };
  }
  bool operator==(const TweakInfo&) const = default;
};

}  // namespace tavlen
