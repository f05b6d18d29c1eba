#include "tavlen/foundation/zip/detail/ZIPBudget.h"

#include "tavlen/foundation/zip/ZIPError.h"

namespace tavlen {

void ZIPBudget::add(const std::string& name, std::uint64_t bytes) {
  if (bytes > limits_.entryBytes) {
    throw ZIPError(ZIPError::Case::entryTooLarge, name, limits_.entryBytes);
  }
  if (bytes_ > limits_.archiveBytes || bytes > limits_.archiveBytes - bytes_) {
    throw ZIPError(ZIPError::Case::archiveTooLarge, name, limits_.archiveBytes);
  }
  bytes_ += bytes;
  // bytes > ratio * compressed, without the product, which could overflow
  if (bytes_ > limits_.ratioFreeBytes && (bytes_ - 1) / limits_.ratio >= compressedBytes_) {
    throw ZIPError(ZIPError::Case::ratioTooHigh, name, limits_.ratio);
  }
}

}  // namespace tavlen
