#pragma once

#include <cstddef>
#include <vector>

#include "tavlen/foundation/coding/Coding.h"

namespace tavlen {

/// A field whose value is decoded, so that the document is checked by the same rules, and then
/// dropped: for summaries of documents whose whole contents are not needed.
template <class T>
struct Discarded {};

template <class T>
struct Coding<Discarded<T>> {
  static void decode(Decoder& decoder, Discarded<T>& /*field*/) {
    T value{};
    tavlen::decode(decoder, value);
  }
};

/// One element at a time is held.
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
