#pragma once

#include <string>

namespace tavlen {

/// The Info.plist of an app, with the further members `rest`.
inline std::string appPlist(
    const std::string& bundleID, const std::string& executable,
    const std::string& rest = "<key>CFBundleVersion</key><string>1</string>") {
  return "<plist version=\"1.0\"><dict><key>CFBundleExecutable</key><string>" + executable +
         "</string><key>CFBundleIdentifier</key><string>" + bundleID +
         "</string><key>UIDeviceFamily</key><integer>1</integer>" + rest + "</dict></plist>";
}

}  // namespace tavlen
