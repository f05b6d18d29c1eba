#pragma once

#include <filesystem>
#include <string>

#include "tavlen/foundation/errors/LocalizedError.h"

namespace tavlen {

/// The folder that holds the host's own resources: its string tables and the transpiler script.
///
/// Threads: all functions may be called from any thread.
namespace MainBundle {

/// Names the folder and forgets the tables read so far. Empty, the start value, means that there is
/// none.
void setURL(std::filesystem::path folder);
std::filesystem::path url();

/// The entry of the bundle's table `Localizable.strings` for `text.key`; the English where there is
/// none, or no table, or one that cannot be read, and for an empty key.
///
/// The table is that of the user's language (`zh-Hant-TW.lproj`, `zh-Hant.lproj`, `zh.lproj`; also
/// with underscores), else `en.lproj`, `Base.lproj` or the bundle itself: the first that is there.
/// It is read once, so a later change of the file or of the language is not seen before setURL.
std::string localizedString(const LocalizedText& text);

}  // namespace MainBundle

}  // namespace tavlen
