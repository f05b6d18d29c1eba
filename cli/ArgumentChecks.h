#pragma once

#include <CLI/CLI.hpp>

namespace tavlen::cli {

/// Refuses an empty text, which an unset variable of a shell leaves behind: as a path it would mean
/// the current folder.
CLI::Validator notEmpty();

}  // namespace tavlen::cli
