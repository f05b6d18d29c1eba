#include "tavlen/foundation/objc/ObjCImages.h"

#include <dlfcn.h>
#include <objc/runtime.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <system_error>

#if defined(__GNU_LIBOBJC__)
#include <link.h>

#include "tavlen/foundation/files/ExecutablePath.h"
#else
#include <cstdlib>
#include <iterator>
#endif

namespace tavlen::ObjCRuntime {

namespace {

/// Whether `path` may be passed to the loader, which would open a pipe and wait for ever, and takes
/// an empty text for the program itself.
bool isLoadable(const std::filesystem::path& path) {
  if (!path.has_parent_path()) return !path.empty();  // a name that the loader searches for
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  // The device's own libraries are in the loader's cache; their files do not exist.
  return !std::filesystem::exists(status) || std::filesystem::is_regular_file(status);
}

#if defined(__GNU_LIBOBJC__)

struct CloseImage {
  void operator()(void* image) const { ::dlclose(image); }
};

/// The loader's record of the image at `path`, valid while the image is loaded. Do not compare
/// paths: an image has many, and the loader keeps only the first.
const link_map* loadedImage(const std::filesystem::path& path) {
  if (!isLoadable(path)) return nullptr;
  std::unique_ptr<void, CloseImage> image(::dlopen(path.c_str(), RTLD_LAZY | RTLD_NOLOAD));
  std::error_code error;
  // The loader does not know the program by its path.
  if (image == nullptr && std::filesystem::equivalent(path, executablePath(), error)) {
    image.reset(::dlopen(nullptr, RTLD_LAZY));
  }
  const link_map* map = nullptr;
  if (image == nullptr || ::dlinfo(image.get(), RTLD_DI_LINKMAP, &map) != 0) return nullptr;
  return map;
}

/// The image whose data contains `cls`; null for a class on the heap.
const link_map* imageOf(Class cls) {
  dl_find_object found{};
  return _dl_find_object(cls, &found) == 0 ? found.dlfo_link_map : nullptr;
}

std::vector<Class> allClasses() {
  std::vector<Class> classes(64);
  std::size_t count = classes.size();
  // Other threads may add classes between the two calls, so the list is complete only when there is
  // room to spare.
  while (count == classes.size()) {
    classes.resize(classes.size() * 4);
    count = static_cast<std::size_t>(
        objc_getClassList(classes.data(), static_cast<int>(classes.size())));
  }
  classes.resize(count);
  return classes;
}

#else

using CopiedNames = std::unique_ptr<const char*, decltype(&std::free)>;

/// The path under which the run time knows the image at `path`. It compares bytes, and a path on
/// the device often leads through a link, such as /var.
std::string nameOfImage(const std::filesystem::path& path) {
  unsigned count = 0;
  const CopiedNames names(objc_copyImageNames(&count), &std::free);
  const char* const* const begin = names.get();
  const char* const* const end = begin + count;
  const auto isPath = [&](const char* name) { return path.native() == name; };
  if (std::any_of(begin, end, isPath)) return path;
  const auto* const same = std::find_if(begin, end, [&](const char* name) {
    std::error_code error;
    return std::filesystem::equivalent(path, name, error);
  });
  return same == end ? path.string() : *same;
}

#endif

}  // namespace

std::optional<std::string> loadImage(const std::filesystem::path& path) {
  if (!isLoadable(path)) return path.string() + ": not a regular file";
  // Both platforms keep the error text for each thread. Its existence does not prove a failure: an
  // initialiser may have left the text of its own failed call.
  ::dlerror();  // NOLINT(concurrency-mt-unsafe)
  if (::dlopen(path.c_str(), RTLD_LAZY | RTLD_NODELETE) != nullptr) return std::nullopt;
  const char* text = ::dlerror();  // NOLINT(concurrency-mt-unsafe)
  return text == nullptr ? "unknown error" : text;
}

#if defined(__GNU_LIBOBJC__)

std::vector<Class> classesOfImage(const std::filesystem::path& path) {
  const link_map* image = loadedImage(path);
  if (image == nullptr) return {};
  std::vector<Class> classes = allClasses();
  classes.erase(std::remove_if(classes.begin(), classes.end(),
                               [&](Class cls) { return imageOf(cls) != image; }),
                classes.end());
  // The run time's order is that of a hash table. Addresses are stable: GCC emits classes in source
  // order (in reverse, unless it optimises), and the linker keeps the order of the sources.
  std::sort(classes.begin(), classes.end(), std::less<>());
  return classes;
}

std::optional<std::string> imagePath(Class cls) {
  const link_map* image = imageOf(cls);
  if (image == nullptr) return std::nullopt;
  const std::string name = image->l_name;
  return name.empty() ? executablePath().string() : name;
}

#else

std::vector<Class> classesOfImage(const std::filesystem::path& path) {
  unsigned count = 0;
  const CopiedNames names(objc_copyClassNamesForImage(nameOfImage(path).c_str(), &count),
                          &std::free);
  std::vector<Class> classes;
  classes.reserve(count);
  std::transform(names.get(), names.get() + count, std::back_inserter(classes),
                 [](const char* name) { return name == nullptr ? nullptr : objc_getClass(name); });
  return classes;
}

std::optional<std::string> imagePath(Class cls) {
  const char* name = class_getImageName(cls);
  if (name == nullptr) return std::nullopt;
  return name;
}

#endif

}  // namespace tavlen::ObjCRuntime
