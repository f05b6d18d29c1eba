#pragma once

#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "tavlen/bundles/InterfaceOrientation.h"
#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/foundation/coding/SemanticVersion.h"

namespace tavlen {

/// The values of an app bundle's Info.plist that the library uses; other keys are not kept. A plain
/// value.
///
/// Names, versions and orientations have accessors that implement the fallbacks. The members that
/// begin with "_" are the stored values of the keys in codedFields().
struct TAVLEN_API Info {
  /// The value of a CFBundleIcons key.
  struct Icons {
    /// The app's own icon, as opposed to alternate ones.
    struct PrimaryIcon {
      /// File names, with or without scale suffix and extension.
      std::vector<std::string> iconFiles;

      bool operator==(const PrimaryIcon&) const = default;
      static constexpr auto codedFields() {
        return std::tuple{requiredField("CFBundleIconFiles", &PrimaryIcon::iconFiles)};
      }
    };

    /// The app's own icon.
    std::optional<PrimaryIcon> primaryIcon;

    bool operator==(const Icons&) const = default;
    static constexpr auto codedFields() {
      return std::tuple{optionalField("CFBundlePrimaryIcon", &Icons::primaryIcon)};
    }
  };

  /// Decoded from an integer or a list of integers, encoded as one integer: 2 when a list contained
  /// the iPad, whatever else it contained, otherwise 1.
  struct DeviceFamily {
    /// Whether the iPad is one of the devices.
    bool supportsIPad = false;

    bool operator==(const DeviceFamily&) const = default;
  };

  /// The main executable's file name.
  std::string executable;
  /// The bundle identifier.
  std::string bundleID;
  /// The build number.
  std::string build;
  /// The version that users see.
  std::optional<std::string> _shortVersion;
  /// The short name.
  std::optional<std::string> _bundleName;
  /// The display name.
  std::optional<std::string> _name;
  /// The icons.
  std::optional<Icons> _icons;
  /// The icons on an iPad.
  std::optional<Icons> _ipadIcons;
  /// The icon's file names, from an older key.
  std::optional<std::vector<std::string>> _iconFiles;
  /// The same for an iPad.
  std::optional<std::vector<std::string>> _ipadIconFiles;
  /// The icon's file name, from the oldest key.
  std::optional<std::string> _iconFile;
  /// The same for an iPad.
  std::optional<std::string> _ipadIconFile;
  /// As stored, including unknown ones.
  std::optional<std::vector<std::string>> _orientations;
  /// The same for an iPad.
  std::optional<std::vector<std::string>> _ipadOrientations;
  /// The devices that the app supports.
  DeviceFamily _deviceFamily;
  /// The oldest system that runs the app; nothing for any.
  std::optional<SemanticVersion> minimumOSVersion;

  /// The display name, else the bundle name, else the executable's name.
  const std::string& name() const;
  /// Sets the display name, unless name() already returns `name`.
  void setName(const std::string& name);

  /// The bundle name, else the display name, else the executable's name.
  const std::string& bundleName() const;
  /// Sets the bundle name.
  void setBundleName(std::string name);

  /// The short version, else the build.
  const std::string& version() const;
  /// Sets the short version.
  void setVersion(std::string version);

  /// Whether the app supports the iPad.
  bool supportsIPad() const { return _deviceFamily.supportsIPad; }
  /// Sets whether the app supports the iPad.
  void setSupportsIPad(bool supports) { _deviceFamily.supportsIPad = supports; }

  /// The stored orientations without unknown ones, with duplicates; nothing when the key is absent.
  std::optional<std::vector<InterfaceOrientation>> orientations() const;
  /// Sets the orientations; nothing removes the key.
  void setOrientations(const std::optional<std::vector<InterfaceOrientation>>& orientations);

  /// The iPad's own list; does not fall back to orientations().
  std::optional<std::vector<InterfaceOrientation>> ipadOrientations() const;
  /// Sets the list of orientations(), not the iPad's own: existing tweaks rely on this.
  void setIpadOrientations(const std::optional<std::vector<InterfaceOrientation>>& orientations);

  bool operator==(const Info&) const = default;

  /// The coded fields. Their order is the order of coding, in which the bundle name comes first.
  static constexpr auto codedFields() {
    return std::tuple{
        optionalField("CFBundleName", &Info::_bundleName),
        requiredField("CFBundleExecutable", &Info::executable),
        requiredField("CFBundleIdentifier", &Info::bundleID),
        requiredField("CFBundleVersion", &Info::build),
        optionalField("CFBundleShortVersionString", &Info::_shortVersion),
        optionalField("CFBundleDisplayName", &Info::_name),
        optionalField("CFBundleIcons", &Info::_icons),
        optionalField("CFBundleIcons~ipad", &Info::_ipadIcons),
        optionalField("CFBundleIconFiles", &Info::_iconFiles),
        optionalField("CFBundleIconFiles~ipad", &Info::_ipadIconFiles),
        optionalField("CFBundleIconFile", &Info::_iconFile),
        optionalField("CFBundleIconFile~ipad", &Info::_ipadIconFile),
        optionalField("UISupportedInterfaceOrientations", &Info::_orientations),
        optionalField("UISupportedInterfaceOrientations~ipad", &Info::_ipadOrientations),
        requiredField("UIDeviceFamily", &Info::_deviceFamily),
        optionalField("MinimumOSVersion", &Info::minimumOSVersion),
    };
  }
};

template <>
struct Coding<Info::DeviceFamily> {
  static void encode(Encoder& encoder, Info::DeviceFamily value);
  static void decode(Decoder& decoder, Info::DeviceFamily& value);
};

}  // namespace tavlen
