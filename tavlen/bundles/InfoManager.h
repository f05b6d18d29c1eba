#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tavlen/bundles/Info.h"
#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/foundation/errors/CasedError.h"
#include "tavlen/foundation/image/Image.h"

namespace tavlen {

/// Reads an app bundle's Info.plist and icons. Caches nothing: every call reads the files again.
/// Threads: any.
struct TAVLEN_API InfoManager {
  /// The cases of Error.
  enum class ErrorCase { iconNotFound, noIconFound, couldNotResize };

  /// The errors of icons.
  class Error : public CasedError<ErrorCase> {
   public:
    /// No image for `name`.
    static Error iconNotFound(std::string name);
    /// No image for any name in the Info.
    static Error noIconFound();
    /// The requested size is not allowed.
    static Error couldNotResize();

   private:
    using CasedError::CasedError;
  };

  /// Reads the bundle in the folder `url`.
  explicit InfoManager(std::filesystem::path url) : bundleURL(std::move(url)) {}

  /// The bundle's folder, which contains "Info.plist".
  std::filesystem::path bundleURL;

  /// Reads the Info.plist. Throws std::system_error when it cannot be read, DecodingError when it
  /// is not an Info.
  Info info() const;

  /// The app's icon: of the files that the Info's names refer to, the one with the most points, the
  /// first of equal ones. Files that are not images or exceed the limits (64 MiB for a file) are
  /// skipped, and so are names that lead out of the bundle. Throws Error::noIconFound when none is
  /// left, std::system_error for an existing file that cannot be read, and the errors of info().
  /// Blocks while it decodes the file, and cannot be cancelled.
  Image icon() const;
  /// The largest of the files that `name`, a name as in an Info, refers to on either device. Throws
  /// Error::iconNotFound without one, and std::system_error as above. Blocks as above.
  Image icon(const std::string& name) const;

  /// Calls `visit` with each file, relative to the bundle, that icon() or, with a name, icon(name)
  /// looks at, in its order. The files need not exist, and may occur more than once. Throws the
  /// errors of info(), which only icon() needs.
  void visitIconFiles(const std::optional<std::string>& name,
                      FunctionRef<void(const std::string& file)> visit) const;

  /// Scales `icon` in proportion, so that its longer side has `longerSide` points. Throws
  /// Error::couldNotResize for 0 and for more than an image may have.
  static Image resizedIcon(const Image& icon, std::uint32_t longerSide);

  bool operator==(const InfoManager&) const = default;
};

}  // namespace tavlen
