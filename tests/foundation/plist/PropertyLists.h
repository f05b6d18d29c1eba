#pragma once

#include <gtest/gtest.h>

#include "tavlen/foundation/plist/PropertyListSerialization.h"
#include "tests/foundation/plist/PropertyListGraph.h"

namespace tavlen {

/// What the error of reading says; nothing where the bytes are read.
inline std::string refusal(std::string_view bytes,
                           PropertyList (*read)(std::string_view) = readPropertyList) {
  try {
    static_cast<void>(read(bytes));
    return "";
  } catch (const DecodingError& error) {
    const std::string begin = "The given data was not a valid property list. ";
    EXPECT_EQ(error.which(), DecodingError::Case::dataCorrupted);
    EXPECT_TRUE(error.codingPath().empty());
    EXPECT_TRUE(error.text().starts_with(begin));
    return error.text().substr(begin.size());
  }
}

inline std::string plist(std::string_view body) {
  return "<plist version='1.0'>" + std::string(body) + "</plist>";
}

}  // namespace tavlen
