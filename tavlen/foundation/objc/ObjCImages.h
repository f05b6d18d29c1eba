#pragma once

#include <objc/objc.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tavlen/foundation/base/API.h"

/// The images of this process and the Objective-C classes in them. The device's run time answers
/// both questions. GCC's does not know images, so there the loader is asked which image contains a
/// class.
///
/// Threads: any. Include in sources only, like ObjCRuntime.h.
namespace tavlen::ObjCRuntime {

/// Loads the image at `path` into this process and runs its initialisers. It stays loaded: a run
/// time cannot unload classes. Symbols are bound lazily. A path without a slash is searched for as
/// the loader does. Returns the loader's error text when loading fails, else nothing.
TAVLEN_API std::optional<std::string> loadImage(const std::filesystem::path& path);

/// The classes that the image at `path` defines, in the run time's order. A class that the run time
/// cannot find by name is null. Empty when the image is not loaded.
///
/// GCC's run time has no order; its classes are sorted by address. Of classes with equal names it
/// keeps the first; the others are left out.
TAVLEN_API std::vector<Class> classesOfImage(const std::filesystem::path& path);

/// The path of the image that defines `cls`, as it was given to the loader. Nothing for a class
/// created at run time. `cls` is not null.
TAVLEN_API std::optional<std::string> imagePath(Class cls);

}  // namespace tavlen::ObjCRuntime
