#pragma once

#include <filesystem>
#include <string>

#include "cli/tweaks/TweakContents.h"

namespace tavlen::cli {

/// Throws std::runtime_error if anything but the text of a tweak is at `file`.
void requireReplaceable(const std::filesystem::path& file);

/// Writes `contents`, whose text is `text`, as a folder that can be read as a tweak. Everything is
/// written into a temporary folder on the same volume first: a new folder, with those that lead to
/// it, then appears in one step; in an existing folder the files are renamed into place, the text
/// last, under a StoreLock. Until then, a failure, SIGHUP, SIGINT or SIGTERM leaves nothing.
/// Warns of other files in Resources and Executables. Throws std::runtime_error if the folder has
/// other contents than a tweak's text, and std::system_error, with ECANCELED after a signal.
void writeTextFolder(const TweakContents& contents, const std::string& text,
                     const std::filesystem::path& folder);

}  // namespace tavlen::cli
