#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tavlen::cli {

/// The arguments, after the program's name, with which dumpInChild() starts this program again to
/// dump the image, or only its first class named `className`.
std::vector<std::string> dumpChildArguments(const std::filesystem::path& image,
                                            const std::optional<std::string>& className);

/// The child's side of dumpInChild(). Returns at once unless the arguments are those of
/// dumpChildArguments(), the standard input is a socket, and the process leads its group. Otherwise
/// dumps the image, sends its DumpAnswer to the socket, and exits without running anything that the
/// image has registered for the exit. Whatever the image does, the process group ends when the
/// other end of the socket is closed. Throws if the answer cannot be sent.
void dumpIfChild(int argc, const char* const* argv);

}  // namespace tavlen::cli
