#pragma once

#include <objc/objc.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

/// The images of this process and the Objective-C classes in them. The device's run time answers
/// both questions itself; GCC's knows no images, so there the loader is asked where a class lies.
///
/// Threads: any. For sources only, as ObjCRuntime.h is.
namespace tavlen::ObjCRuntime {

/// Loads the image at `path` into this process and runs its initialisers. It stays for good: a run
/// time cannot forget classes. Bindings are made when they are used. A path without a slash is
/// searched for as the loader does. Gives the loader's text where that fails, else nothing.
std::optional<std::string> loadImage(const std::filesystem::path& path);

/// The classes that the image at `path` defines, in the run time's order; an entry that it cannot
/// find by its name is null. None where the image is not loaded.
///
/// GCC's run time has no order; there it is that of the classes' addresses. It keeps the first of
/// equally named classes; the others are left out.
std::vector<Class> classesOfImage(const std::filesystem::path& path);

/// The path of the image that defines `cls`, as the loader was given it. Nothing for a class that
/// was made at run time. `cls` is not null.
std::optional<std::string> imagePath(Class cls);

}  // namespace tavlen::ObjCRuntime
