#pragma once

#include <span>
#include <string>
#include <string_view>

#include "cli/terminal/Diagnostic.h"

/// Messages as comments in a text that is being edited, each before the line that it is about.
namespace tavlen::cli {

/// The text with the messages, which have lines and columns.
std::string withComments(std::string_view text, std::span<const Diagnostic> messages);

/// The text without such comments: withComments(), undone, wherever the user moved them.
std::string withoutComments(std::string_view text);

}  // namespace tavlen::cli
