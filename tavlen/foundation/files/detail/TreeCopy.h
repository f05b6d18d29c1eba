#pragma once

#include <filesystem>
#include <functional>

namespace tavlen {

/// Whether a copy is flushed to the disk.
enum class Durability { whenTheSystemLikes, onTheDisk };

/// Copies a tree as copyItem() does. `durability` says whether the copy is on the disk when the
/// call returns.
void copyTree(const std::filesystem::path& source, const std::filesystem::path& destination,
              const std::function<bool(const std::filesystem::path& name)>& isLeftOut,
              Durability durability);

}  // namespace tavlen
