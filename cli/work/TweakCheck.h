#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/arguments/TweakArgument.h"

namespace tavlen {
struct Hook;
}

namespace tavlen::cli {

/// What is wrong with the type encoding of a hooked method, after the word "signature": it is
/// malformed, or does not match the selector. Probably it is mistyped; the library stores any text.
/// Returns nothing if it fits.
std::optional<std::string> signatureProblem(const Hook& hook);

/// Warnings about the documents of `tweak`; each is one line that begins with the file and the
/// place. They cover mistakes with which a tweak still builds: a signature that does not match its
/// selector, an index that the method does not have, a method hooked twice, a resource that is
/// missing or lies outside its folder, and an unknown glyph.
std::vector<std::string> warningsFor(const OpenedTweak& tweak);

}  // namespace tavlen::cli
