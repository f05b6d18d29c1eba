#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "tavlen/introspection/classes/ClassParser.h"
#include "tavlen/introspection/classes/StaticClassParser.h"

namespace tavlen::cli {

/// Throws std::runtime_error if `folder` has files, but is not one that writeHeaders() wrote.
void requireHeaderFolder(const std::filesystem::path& folder);

/// Writes an Objective-C header for each class and category into `folder` (ClassHeaders::write()),
/// and their number to a terminal. Throws std::system_error with the path.
void writeHeaders(const ClassParser::Classes& classes,
                  const std::vector<StaticClassParser::Category>& categories,
                  const std::string& folder);

}  // namespace tavlen::cli
