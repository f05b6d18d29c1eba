#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// Identifies a file and its state: it differs for another file and after a change.
struct TAVLEN_API FileStamp {
  std::uint64_t volume;
  std::uint64_t file;
  std::int64_t size;
  std::int64_t seconds;
  std::int64_t nanoseconds;

  bool operator==(const FileStamp&) const = default;
};

/// The stamp of the regular file that `file` is, or leads to as a link; nothing without such a
/// file. Below another root than "/" the device's links count. Threads: any.
TAVLEN_API std::optional<FileStamp> stampOf(const std::filesystem::path& file);

/// What `path` is, or leads to as a link, in the same way; empty for a cycle of links.
TAVLEN_API std::filesystem::path linkTarget(const std::filesystem::path& path);

/// `folder`, or its closest parent folder that exists.
TAVLEN_API std::filesystem::path existingFolder(std::filesystem::path folder);

}  // namespace tavlen
