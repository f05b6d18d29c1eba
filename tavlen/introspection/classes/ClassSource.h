#pragma once

#include <filesystem>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// What the classes of an image can be read from.
enum class ClassSource {
  file,     ///< its Mach-O file; StaticClassParser
  process,  ///< a process of this machine, which loads the image; DynamicClassParser
  app       ///< its app, which is relaunched with the dump agent; RemoteClassParser
};

/// What to read the classes of the image at `path` from, unless the user chooses: its file wherever
/// it is a Mach-O file, on any machine, as then none of the image's code runs, and wherever it lies
/// below a device root other than "/", whose programs are never run; otherwise a process, for this
/// machine's own libraries. Never its app, because that ends the app that the user may be working
/// with. Throws std::system_error when the file cannot be read. Threads: any.
TAVLEN_API ClassSource preferredClassSource(const std::filesystem::path& path);

}  // namespace tavlen
