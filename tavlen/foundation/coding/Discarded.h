#pragma once

#include <cstddef>
#include <vector>

#include "tavlen/foundation/coding/Coding.h"

namespace tavlen {

/// A field whose value is decoded, so that the document is checked by the same rules, and then
/// dropped. For summaries that do not need the whole document.
template <class T>
struct Discarded {};

/// Decodes a T and drops it.
template <class T>
struct Coding<Discarded<T>> {
  static void decode(Decoder& decoder, Discarded<T>& /*field*/) {
    T value{};
    tavlen::decode(decoder, value);
  }
};

/// Decodes an array, keeping only one element at a time in memory.
template <class Element>
struct Coding<Discarded<std::vector<Element>>> {
  static void decode(Decoder& decoder, Discarded<std::vector<Element>>& /*field*/) {
    std::size_t count = 0;
    decoder.elements([&] {
      requireElementCount<Element>(++count, DecodingError::dataCorrupted);
      Element element{};
      tavlen::decode(decoder, element);
    });
  }
};

}  // namespace tavlen
