#include "tavlen/foundation/plist/SharedReferenceBudget.h"

#include <algorithm>
#include <string>

namespace tavlen {

namespace {

/// A walk of the list as a tree may look at each object and each reference this many times without
/// having met a shared one: a dictionary's kind, for example, is looked up before it is read.
constexpr std::size_t kPasses = 8;

/// The least bytes of a file that holds `list`: a byte for the marker of each object and another
/// for its offset, a byte for each reference, two for what became three of UTF-8. In XML all takes
/// more.
std::size_t leastFileSize(const PropertyList& list) {
  return 2 * list.size() + list.referenceCount() + list.byteCount() / 3 * 2;
}

/// What the list itself leaves of the memory. A file with bytes between its objects has room made
/// for more than they tell.
std::size_t memoryLeft(const PropertyList& list) {
  const std::size_t forBytes = limits::kDecodedBytesPerByte * leastFileSize(list);
  return limits::kDecodedBytes + forBytes - std::min(forBytes, list.memory());
}

}  // namespace

SharedReferenceBudget::SharedReferenceBudget(const PropertyList& list)
    : visits_(limits::kSharedVisits + kPasses * (list.size() + list.referenceCount())),
      bytes_(memoryLeft(list)),
      expansion_(limits::kExpandedBytes + limits::kExpandedBytesPerByte * leastFileSize(list)),
      visitsLeft_(visits_),
      bytesLeft_(bytes_),
      expansionLeft_(expansion_) {}

void SharedReferenceBudget::failVisits() {
  // Stays exhausted, so that a decoder which drops this error cannot continue reading.
  visitsLeft_ = 0;
  throw DecodingError::dataCorrupted("more than " + std::to_string(visits_) +
                                     " values by shared references");
}

void SharedReferenceBudget::failBytes() const {
  throw DecodingError::dataCorrupted("more than " + std::to_string(bytes_) +
                                     " bytes by shared references");
}

void SharedReferenceBudget::failExpansion() const {
  throw DecodingError::dataCorrupted("more than " + std::to_string(expansion_) +
                                     " bytes when shared references are written out");
}

}  // namespace tavlen
