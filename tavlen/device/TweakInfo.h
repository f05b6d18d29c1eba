#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/base/Limits.h"
#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/foundation/files/URL.h"

namespace tavlen {

/// The record of the tweak installed for an app, stored as a keyed archive. Any member may be
/// absent in a record that was read.
struct TAVLEN_API TweakInfo {
  /// The class name in archives.
  static constexpr std::string_view archivedClassName = "TweakInfo";
  /// The largest icon file that is read, in bytes. A larger one counts as unreadable.
  static constexpr std::uintmax_t kLargestIcon = limits::kIconFileBytes;

  /// An empty record.
  TweakInfo() = default;
  /// A record without an icon.
  TweakInfo(std::string appID, std::string tweak)
      : bundleID(std::move(appID)), tweakID(std::move(tweak)) {}

  /// The app's bundle identifier.
  std::optional<std::string> bundleID;
  /// The identifier of the installed tweak.
  std::optional<std::string> tweakID;
  /// The icon that replaces the app's own, as a path on the device.
  std::optional<URL> customIconURL;

  /// Whether the home screen must be restarted when this record replaces `other`: when only one of
  /// them has an icon, or when the bytes of the icons differ. Reads only file URLs, through the
  /// device root; two unreadable icons are equal. No record counts as one without an icon.
  bool shouldRespringAfterChangingFromOther(const std::optional<TweakInfo>& other) const;

  /// The coded fields, for archives.
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
