#pragma once

#include <filesystem>
#include <functional>

#include "tavlen/foundation/base/API.h"

/// Copying, moving and removing of whole files and folders.
///
/// Errors are std::system_error with the path in the text: EEXIST when the destination exists, even
/// as an empty folder or a dangling link, and ENOENT when the source is missing. Stack use does not
/// grow with the depth of a tree. Threads: any.
namespace tavlen {

/// Copies a file, or a folder with its contents. Symbolic links are copied as links; permissions
/// are kept. Entries below the source for whose names `isLeftOut` returns true are skipped. Special
/// files are refused (EINVAL), and so is copying a folder into itself. A failed copy is removed.
TAVLEN_API void copyItem(
    const std::filesystem::path& source, const std::filesystem::path& destination,
    const std::function<bool(const std::filesystem::path& name)>& isLeftOut = {});

/// Moves a file, link or folder; the destination never shows a part of it. On one volume this is a
/// rename. Otherwise the item is copied next to the destination, flushed to the disk and renamed,
/// and then the source is removed. A source that cannot be removed is an error that leaves the
/// copy.
TAVLEN_API void moveItem(const std::filesystem::path& source,
                         const std::filesystem::path& destination);

/// Removes a file, a link itself, or a folder with its contents, even one that its owner may not
/// enter. Links that another process adds concurrently are not followed. A missing item is no
/// error.
TAVLEN_API void removeItem(const std::filesystem::path& item);

/// As removeItem(), but ignores failures: for clean-up after an error, and for files that are swept
/// later.
TAVLEN_API void removeQuietly(const std::filesystem::path& item) noexcept;

}  // namespace tavlen
