#pragma once

#include <filesystem>
#include <functional>

namespace tavlen {

enum class Durability { whenTheSystemLikes, onTheDisk };

/// Copies a tree as copyItem() does; `durability` says whether the copy is on the disk afterwards.
void copyTree(const std::filesystem::path& source, const std::filesystem::path& destination,
              const std::function<bool(const std::filesystem::path& name)>& isLeftOut,
              Durability durability);

}  // namespace tavlen
