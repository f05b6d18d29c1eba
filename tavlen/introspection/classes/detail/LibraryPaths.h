#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tavlen/bundles/Executable.h"
#include "tavlen/foundation/macho/MachOImage.h"
#include "tavlen/foundation/text/SharedText.h"

namespace tavlen {

/// The paths on the device of the libraries that an image of an app loads, as the loader finds
/// them.
///
/// Only files in the bundle are looked for; a name that leads to none stays as it is written in the
/// image. Threads: one object one thread at a time.
class LibraryPaths {
 public:
  /// `image` is that of `executable`, and must outlive this object.
  LibraryPaths(const Executable& executable, const MachOImage& image);

  /// The path of the library with that ordinal, 0 for the image itself; nothing when the loader
  /// searches all libraries. Malformed UTF-8 becomes U+FFFD.
  std::optional<SharedText> pathOf(int ordinal);

 private:
  std::optional<std::string> find(int ordinal);
  std::string resolved(const std::string& name);
  const std::vector<std::string>& runPathsOfProgram();
  /// The path of an existing file in the bundle, for a name that begins with a place that the
  /// loader knows.
  std::optional<std::string> pathInBundle(const std::string& name,
                                          const std::filesystem::path& loaderFolder) const;

  const MachOImage& image_;
  std::filesystem::path file_;                      ///< of the image, absolute
  std::filesystem::path bundle_;                    ///< empty outside of a bundle
  std::filesystem::path programFolder_;             ///< of the program that loads the image
  std::map<int, std::optional<SharedText>> paths_;  ///< by ordinal, as far as asked for
  /// Of the program that loads the image; read when first asked for.
  std::optional<std::vector<std::string>> programRunPaths_;
  /// Files that may still be looked for below run paths: apps need some hundred, and a hostile
  /// image may name thousands of libraries and of run paths.
  std::size_t lookups_ = 2000;
};

}  // namespace tavlen
