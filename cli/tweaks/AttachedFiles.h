#pragma once

#include <array>
#include <filesystem>
#include <set>
#include <string>
#include <system_error>

#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/tweaks/TweakFile.h"

namespace tavlen::cli {

/// The folders of a tweak for files that its text does not contain.
inline constexpr std::array kAttachedFolders = {TweakFile::resourcesFolder,
                                                TweakFile::executablesFolder};

/// The files in kAttachedFolders of `folder`, at any depth: their paths relative to `folder`. A
/// link counts as the file that it leads to. Warns of entries that cannot go along, such as links
/// that lead out. Folders that do not exist are empty. Links below the device root are the
/// device's. Messages call the folder `shown`. Throws as throwUnreadable() for a folder that cannot
/// be read.
std::set<std::string> attachedFiles(const std::filesystem::path& folder, const std::string& shown);
/// Gets the path, relative to the tweak's folder, of an entry that cannot go along, and the error
/// if it cannot be read.
using LeftOut = FunctionRef<void(const std::string& name, std::error_code error)>;
/// The same for `top`, one of kAttachedFolders. Instead of warning or throwing, calls `leftOut`.
std::set<std::string> attachedFiles(const std::filesystem::path& folder, const std::string& top,
                                    LeftOut leftOut);
/// Throws the PlacedError of a file or folder that cannot be read.
[[noreturn]] void throwUnreadable(const std::string& path, std::error_code error);

/// Whether both folders have a file at the relative path `name`, with the same bytes and
/// permissions. Throws std::system_error.
bool isSameFile(const std::filesystem::path& one, const std::filesystem::path& other,
                const std::string& name);

/// Copies the file at the relative path `name`, with its permissions, and replaces any file there.
/// Makes the folders that lead to it. Throws std::system_error, and std::runtime_error if the path
/// leads out of `to`.
void copyAttachedFile(const std::filesystem::path& from, const std::filesystem::path& to,
                      const std::string& name);

/// As copyAttachedFile(), for the file itself, no link, in a folder on the same volume: it is
/// renamed.
void moveAttachedFile(const std::filesystem::path& from, const std::filesystem::path& to,
                      const std::string& name);

}  // namespace tavlen::cli
