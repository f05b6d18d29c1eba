#pragma once

#include <span>
#include <string_view>

namespace tavlen {

/// The bundle identifiers of system services, which are never listed as apps, in ascending order.
std::span<const std::string_view> excludedApps();

/// Whether `bundleID` is one of these, case-sensitively.
bool isExcludedApp(std::string_view bundleID);

}  // namespace tavlen
