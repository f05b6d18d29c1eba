#include "tavlen/foundation/plist/SharedReferenceBudget.h"

namespace tavlen {

namespace {

/// A walk of the list as a tree may look at each object and each reference this many times without
/// having met a shared one: a dictionary's kind, for example, is looked up before it is read.
constexpr std::size_t kPasses = 8;

}  // namespace

SharedReferenceBudget::SharedReferenceBudget(const PropertyList& list) {
  visitsLeft_ += kPasses * (list.size() + list.referenceCount());
  bytesLeft_ += kPasses * list.byteCount();
}

void SharedReferenceBudget::failVisits() {
  // Stays exhausted, so that a decoder which drops this error cannot continue reading.
  visitsLeft_ = 0;
  throw DecodingError::dataCorrupted("too many values by shared references");
}

void SharedReferenceBudget::failBytes() {
  throw DecodingError::dataCorrupted("too much data by shared references");
}

}  // namespace tavlen
