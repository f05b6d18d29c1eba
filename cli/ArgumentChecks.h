#pragma once

#include <CLI/CLI.hpp>

namespace tavlen::cli {

/// Refuses an empty text, which an unset variable of a shell leaves behind: as a path it would mean
/// the current folder.
CLI::Validator notEmpty();

/// Refuses what is not UTF-8, which no document can hold.
CLI::Validator validUTF8();

}  // namespace tavlen::cli
