#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <string>

namespace tavlen::faults {

/// All that lies in a folder, by relative path: each entry's kind, mode and contents. What listing
/// ignores, as its name begins with ".", is left out.
using Tree = std::map<std::string, std::string>;

/// What an archive is compared by, instead of its bytes, which hold times.
using ArchiveReader = std::function<Tree(const std::filesystem::path& archive)>;

Tree readTree(const std::filesystem::path& folder, const ArchiveReader& readArchive = {});

/// The stored items that are in `tree` and not in `old`; paths are below the store.
std::set<std::string> newItems(const Tree& tree, const Tree& old, const std::string& store);

/// `tree` with the new items' identifiers, which are random, replaced in names and contents by
/// others that go by the items' contents.
Tree withPlainIdentifiers(const Tree& tree, const Tree& old, const std::string& store);

/// One line an entry in which the two differ.
std::string difference(const Tree& expected, const Tree& found);

}  // namespace tavlen::faults
