#pragma once

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <utility>

#include "tavlen/foundation/zip/detail/ZIPLibrary.h"

namespace tavlen {

/// Keeps the first exception of code called by libzip, because exceptions must not pass through a C
/// library. It is rethrown when libzip has returned.
class ZIPFailure {
 public:
  void set(std::exception_ptr failure) {
    if (!failure_) failure_ = std::move(failure);
  }
  void rethrow() const {
    if (failure_) std::rethrow_exception(failure_);
  }

 private:
  std::exception_ptr failure_;
};

/// Answers ZIP_SOURCE_STAT with the size.
inline zip_int64_t answerZIPStat(void* data, std::uint64_t size) {
  auto& status = *static_cast<zip_stat_t*>(data);
  libzip().zip_stat_init(&status);
  status.valid = ZIP_STAT_SIZE;
  status.size = size;
  return sizeof status;
}

/// The callback of a libzip source: passes commands to `source.handle(command, data, length)`,
/// whose exceptions end up in `source.failure()`.
template <class Source>
zip_int64_t answerZIPSource(void* state, void* data, zip_uint64_t length,
                            zip_source_cmd_t command) {
  auto* source = static_cast<Source*>(state);
  if (command == ZIP_SOURCE_FREE) {
    delete source;
    return 0;
  }
  if (command == ZIP_SOURCE_ERROR) {
    const std::array<int, 2> codes = {ZIP_ER_READ, EIO};
    std::memcpy(data, codes.data(), sizeof codes);
    return sizeof codes;
  }
  try {
    return source->handle(command, data, length);
  } catch (...) {
    source->failure().set(std::current_exception());
    return -1;
  }
}

/// Transfers the ownership of `source` to libzip.
template <class Source>
zip_source_t* makeZIPSource(std::unique_ptr<Source> source) {
  zip_source_t* made =
      libzip().zip_source_function_create(answerZIPSource<Source>, source.get(), nullptr);
  if (made == nullptr) throw std::bad_alloc();
  static_cast<void>(source.release());
  return made;
}

}  // namespace tavlen
