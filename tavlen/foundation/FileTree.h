#pragma once

#include <filesystem>
#include <functional>

/// Whole files and folders, taken from one place to another.
///
/// Errors are std::system_error with the path in the text: EEXIST where something stands at the
/// destination, even an empty folder or a dangling link, and ENOENT where the source is missing.
/// Threads: any.
namespace tavlen {

/// Copies a file, or a folder with all in it; symbolic links are copied as links, permissions kept.
/// Entries below the source whose names `isLeftOut` tells of stay behind. What is neither file,
/// folder nor link is refused (EINVAL). A copy that fails is removed.
void copyItem(const std::filesystem::path& source, const std::filesystem::path& destination,
              const std::function<bool(const std::filesystem::path& name)>& isLeftOut = {});

/// Moves a file or folder, in one step where both lie on one volume; otherwise it is copied, then
/// removed.
void moveItem(const std::filesystem::path& source, const std::filesystem::path& destination);

}  // namespace tavlen
