#pragma once

#include <string>
#include <string_view>

namespace tavlen::cli {

/// Whether `bytes` begin as a ZIP archive.
bool isZIP(std::string_view bytes);

/// Whether `text` is the path of an archive: a regular file that is named .ipa or isZIP(). Throws
/// std::system_error if it cannot be read.
bool isArchive(const std::string& text);

/// The message about an archive by another name than those of tweaks and collections, without its
/// path.
inline constexpr const char* kOtherArchive =
    "is an archive, but not named as those of tweaks (.tvx) and collections (.tvxc)";

}  // namespace tavlen::cli
