#pragma once

#include <string>
#include <string_view>

namespace tavlen::cli {

/// When text is coloured: on terminals, unless the variable NO_COLOR is set, or TERM is not set or
/// "dumb"; everywhere; or nowhere.
enum class ColorUse { automatic, always, never };

/// What is coloured.
enum class ColorRole { heading, error, warning, note };

/// Sets the use of colour in this process; the default is `automatic`. Not thread-safe.
void useColor(ColorUse use);

/// `text` in the colour of its role if what is written to the file descriptor `stream` is coloured;
/// otherwise unchanged.
std::string colored(std::string_view text, ColorRole role, int stream);

}  // namespace tavlen::cli
