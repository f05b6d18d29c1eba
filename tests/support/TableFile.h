#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <vector>

#include "tavlen/foundation/files/FileSystem.h"
#include "tests/support/TestPaths.h"

namespace tavlen {

/// The rows of a table in tests/data, with columns divided by tabs. Each row is filled up with
/// empty columns to at least `columns`; lines that begin with "//" are remarks.
inline std::vector<std::vector<std::string>> tableFrom(const std::string& name,
                                                       std::size_t columns) {
  std::istringstream lines(readFile(paths().testData + "/" + name));
  std::vector<std::vector<std::string>> rows;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("//")) continue;
    std::istringstream fields(line);
    auto& row = rows.emplace_back();
    for (std::string field; std::getline(fields, field, '\t');) row.push_back(field);
    if (row.size() < columns) row.resize(columns);
  }
  EXPECT_FALSE(rows.empty()) << name;
  return rows;
}

inline std::string fromHex(std::string_view text) {
  std::string bytes;
  for (; !text.empty(); text.remove_prefix(2)) {
    bytes += static_cast<char>(std::stoi(std::string(text.substr(0, 2)), nullptr, 16));
  }
  return bytes;
}

}  // namespace tavlen
