#pragma once

#include <filesystem>
#include <functional>

/// Whole files and folders, taken from one place to another.
///
/// Errors are std::system_error with the path in the text: EEXIST where something stands at the
/// destination, even an empty folder or a dangling link, and ENOENT where the source is missing.
/// However deep a tree is, no call needs more stack. Threads: any.
namespace tavlen {

/// Copies a file, or a folder with all in it; symbolic links are copied as links, permissions kept.
/// Entries below the source whose names `isLeftOut` tells of stay behind. What is neither file,
/// folder nor link is refused (EINVAL), and so is a folder's copy within itself. A copy that fails
/// is removed.
void copyItem(const std::filesystem::path& source, const std::filesystem::path& destination,
              const std::function<bool(const std::filesystem::path& name)>& isLeftOut = {});

/// Moves a file, link or folder so that nobody finds a part of it at the destination: by its name
/// alone where both lie on one volume; otherwise it is copied next to the destination first,
/// brought to the disk, renamed, and then removed. A source that cannot be removed is an error that
/// leaves the copy.
void moveItem(const std::filesystem::path& source, const std::filesystem::path& destination);

/// Removes a file, a link itself, or a folder with all in it, also one that is closed to its owner.
/// Links that somebody puts into it meanwhile are not followed. Nothing there is no error.
void removeItem(const std::filesystem::path& item);

/// The same where a failure is of no consequence: for what is removed on the way out of an error,
/// and for what is swept later.
void removeQuietly(const std::filesystem::path& item) noexcept;

}  // namespace tavlen
