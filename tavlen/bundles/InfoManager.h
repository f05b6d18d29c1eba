#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "tavlen/bundles/Info.h"
#include "tavlen/foundation/errors/CasedError.h"
#include "tavlen/foundation/image/Image.h"

namespace tavlen {

/// Reads what an app bundle says about itself. Keeps nothing: every call reads the files again.
struct InfoManager {
  enum class ErrorCase { iconNotFound, noIconFound, couldNotResize };

  class Error : public CasedError<ErrorCase> {
   public:
    static Error iconNotFound(std::string name);
    static Error noIconFound();
    static Error couldNotResize();

   private:
    using CasedError::CasedError;
  };

  explicit InfoManager(std::filesystem::path url) : bundleURL(std::move(url)) {}

  /// The bundle's folder, in which "Info.plist" lies.
  std::filesystem::path bundleURL;

  /// Throws std::system_error when the file cannot be read, DecodingError when it does not hold an
  /// Info.
  Info info() const;

  /// The app's icon: of the files that the Info's names stand for, the one with the most points,
  /// the first of several. What is no image or is larger than the limits, 64 MiB for a file, is
  /// passed over, and so is a name that leads out of the bundle.
  /// Throws Error::noIconFound when none is left, std::system_error for a file that is there and
  /// cannot be read, and what info() throws.
  Image icon() const;
  /// The largest of the files that `name`, as an Info would hold it, stands for, on either device.
  /// Throws Error::iconNotFound when there is none, and std::system_error as above.
  Image icon(const std::string& name) const;

  /// `icon` with its longer side at `longerSide` points, the other one in proportion.
  /// Throws Error::couldNotResize for 0 and for more than an image may have.
  static Image resizedIcon(const Image& icon, std::uint32_t longerSide);

  bool operator==(const InfoManager&) const = default;
};

}  // namespace tavlen
