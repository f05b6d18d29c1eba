#pragma once

#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "tavlen/bundles/InterfaceOrientation.h"
#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/foundation/coding/SemanticVersion.h"

namespace tavlen {

/// What the library reads and writes of an app bundle's Info.plist; other keys are not kept.
///
/// Names, versions and orientations are read and set through the accessors, which know the
/// fallbacks; the members that begin with "_" are the keys as they are stored.
struct Info {
  struct Icons {
    struct PrimaryIcon {
      std::vector<std::string> iconFiles;

      bool operator==(const PrimaryIcon&) const = default;
      static constexpr auto codedFields() {
        return std::tuple{requiredField("CFBundleIconFiles", &PrimaryIcon::iconFiles)};
      }
    };

    std::optional<PrimaryIcon> primaryIcon;

    bool operator==(const Icons&) const = default;
    static constexpr auto codedFields() {
      return std::tuple{optionalField("CFBundlePrimaryIcon", &Icons::primaryIcon)};
    }
  };

  /// Read from one integer or a list of them, written as one: a list comes back narrowed to 2 (the
  /// iPad, whatever else it held) or 1.
  struct DeviceFamily {
    bool supportsIPad = false;

    bool operator==(const DeviceFamily&) const = default;
  };

  std::string executable;
  std::string bundleID;
  std::string build;
  std::optional<std::string> _shortVersion;
  std::optional<std::string> _bundleName;
  std::optional<std::string> _name;
  std::optional<Icons> _icons;
  std::optional<Icons> _ipadIcons;
  std::optional<std::vector<std::string>> _iconFiles;
  std::optional<std::vector<std::string>> _ipadIconFiles;
  std::optional<std::string> _iconFile;
  std::optional<std::string> _ipadIconFile;
  /// As the file holds them; unknown ones too.
  std::optional<std::vector<std::string>> _orientations;
  std::optional<std::vector<std::string>> _ipadOrientations;
  DeviceFamily _deviceFamily;
  std::optional<SemanticVersion> minimumOSVersion;

  /// The display name, else the bundle name, else the executable's.
  const std::string& name() const;
  /// Sets the display name, unless `name` is already what name() answers.
  void setName(const std::string& name);

  /// The bundle name, else the display name, else the executable's.
  const std::string& bundleName() const;
  void setBundleName(std::string name);

  /// The short version, else the build.
  const std::string& version() const;
  void setVersion(std::string version);

  bool supportsIPad() const { return _deviceFamily.supportsIPad; }
  void setSupportsIPad(bool supports) { _deviceFamily.supportsIPad = supports; }

  /// The stored orientations without the unknown ones, duplicates kept; nothing when none are
  /// stored. Setting nothing removes the key.
  std::optional<std::vector<InterfaceOrientation>> orientations() const;
  void setOrientations(const std::optional<std::vector<InterfaceOrientation>>& orientations);

  /// The iPad's own list, without a fallback to the other.
  std::optional<std::vector<InterfaceOrientation>> ipadOrientations() const;
  /// Stores into the list of `orientations`, not into the iPad's: tweaks rely on it.
  void setIpadOrientations(const std::optional<std::vector<InterfaceOrientation>>& orientations);

  bool operator==(const Info&) const = default;

  /// In the order of coding, which is not the members': the bundle name comes first.
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
