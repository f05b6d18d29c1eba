#include "tavlen/foundation/plist/SharedReferenceBudget.h"

namespace tavlen {

namespace {

/// A walk of the list as a tree may look at each object and each reference this often (a dictionary
/// is searched for its kind before it is read) without having met a shared one.
constexpr std::size_t kPasses = 8;

}  // namespace

SharedReferenceBudget::SharedReferenceBudget(const PropertyList& list) {
  visitsLeft_ += kPasses * (list.size() + list.referenceCount());
  bytesLeft_ += kPasses * list.byteCount();
}

void SharedReferenceBudget::failVisits() {
  // Stays so: nobody who drops this error goes on reading.
  visitsLeft_ = 0;
  throw DecodingError::dataCorrupted("too many values by shared references");
}

void SharedReferenceBudget::failBytes() {
  throw DecodingError::dataCorrupted("too much data by shared references");
}

}  // namespace tavlen
