#pragma once

#include <filesystem>

namespace tavlen::loader {

/// Makes the main bundle answer with the values of the Info.plist at `file` where it has them, and
/// with its own otherwise. Does nothing where there is no such file, or no Foundation. To call
/// once, before the program's main function.
void overlayMainBundle(const std::filesystem::path& file);

}  // namespace tavlen::loader
