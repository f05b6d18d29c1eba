#pragma once

#include <filesystem>
#include <string>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/errors/LocalizedError.h"

namespace tavlen {

/// The folder with the host's own resources: its string tables and the transpiler script.
///
/// Threads: any, for all functions.
namespace MainBundle {

/// Sets the folder and forgets the tables read so far. Empty, the initial value, means that there
/// is no such folder.
TAVLEN_API void setURL(std::filesystem::path folder);
/// The folder; empty when none was set.
TAVLEN_API std::filesystem::path url();

/// Returns the entry for `text.key` in the bundle's table `Localizable.strings`. Returns the
/// English text when the key is empty, and when the table is missing, cannot be read or lacks the
/// key.
///
/// The table is the first that exists of the user's language (`zh-Hant-TW.lproj`, `zh-Hant.lproj`,
/// `zh.lproj`; also with underscores), `en.lproj`, `Base.lproj` and the bundle itself. It is read
/// once: later changes of the file or of the language take effect after the next setURL().
TAVLEN_API std::string localizedString(const LocalizedText& text);

}  // namespace MainBundle

}  // namespace tavlen
