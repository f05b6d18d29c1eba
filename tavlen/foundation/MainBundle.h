#pragma once

#include <filesystem>
#include <string>

#include "tavlen/foundation/LocalizedError.h"

namespace tavlen {

/// The folder that holds the host's own resources: its string tables and the transpiler script.
///
/// Threads: all functions may be called from any thread.
namespace MainBundle {

/// Names the folder and forgets the tables read so far. Empty, the start value, means that there is
/// none.
void setURL(std::filesystem::path folder);
std::filesystem::path url();

/// The entry of the bundle's "Localizable" table for `text.key` in the user's language; the English
/// where the table, the key or the whole bundle is missing, or the table cannot be read.
std::string localizedString(const LocalizedText& text);

}  // namespace MainBundle

}  // namespace tavlen
