#pragma once

#include <gtest/gtest.h>

#include <random>

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

/// An XML property list.
inline std::string plist(std::string_view body) {
  return "<plist version='1.0'>" + std::string(body) + "</plist>";
}

/// Random trees that both forms can hold and nothing of them is lost in: whole seconds, distinct
/// keys, unsigned integers above 2^63-1 only.
class RandomPropertyList {
 public:
  explicit RandomPropertyList(unsigned seed) : random_(seed) {}

  /// A list of `count` such trees.
  PropertyList make(int count) {
    Indices trees;
    while (count-- > 0) trees.push_back(container(6));
    list_.setRoot(list_.add(PropertyList::Array{trees}));
    return std::move(list_);
  }

 private:
  using Index = PropertyList::Index;

  std::uint64_t below(std::uint64_t limit) { return random_() % limit; }

  std::string text() {
    static const std::string kPieces[] = {"a", "&<>\"'", " ", "é", "日本", "😀", "]]>", "\n\t", ""};
    std::string text;
    for (std::uint64_t i = below(8); i > 0; --i) text += kPieces[below(std::size(kPieces))];
    return text;
  }

  Index container(unsigned depth) {
    Indices elements;
    Members members;
    for (std::uint64_t i = below(6); i > 0; --i) {
      elements.push_back(value(depth));
      members.push_back({list_.add(text() + std::to_string(i)), elements.back()});
    }
    if (below(2) == 0) return list_.add(PropertyList::Array{elements});
    return list_.add(PropertyList::Dictionary{members});
  }

  Index value(unsigned depth) {
    switch (below(depth == 0 ? 7 : 10)) {
      case 0:
        return list_.add(below(2) == 0);
      case 1:
        return list_.add(static_cast<std::int64_t>(random_() >> below(64)));
      case 2:
        return list_.add(random_() | 1ULL << 63);
      case 3:
        return list_.add((static_cast<double>(random_()) - 9e18) / static_cast<double>(random_()));
      case 4:  // three hundred years around 2001
        return list_.add(Date{static_cast<double>(below(10'000'000'000)) - 5e9});
      case 5: {
        std::string bytes(below(100), '\0');
        for (char& byte : bytes) byte = static_cast<char>(below(256));
        return list_.add(PropertyList::Data{bytes});
      }
      case 6:
        return list_.add(text());
      default:
        return container(depth - 1);
    }
  }

  std::mt19937_64 random_;
  PropertyList list_;
};

}  // namespace tavlen
