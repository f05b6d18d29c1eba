#pragma once

#include <libdeflate.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace tavlen {

/// Deflates at the fastest level. What a sample shows not to shrink, as pictures and archives, is
/// put into stored blocks instead. The same bytes always have the same result.
///
/// Throws std::bad_alloc. Threads: one object one thread at a time.
class Deflater {
 public:
  Deflater();

  /// The deflated form of `bytes`, which is complete. Takes as much memory again.
  std::string whole(std::string_view bytes);
  /// A part of a deflated form, to be joined with those of the bytes before and after, which it
  /// does not refer to. The last one completes it.
  std::string block(std::string_view bytes, bool isLast);

 private:
  bool shrinks(std::string_view bytes);

  struct Free {
    void operator()(libdeflate_compressor* compressor) const {
      libdeflate_free_compressor(compressor);
    }
  };
  std::unique_ptr<libdeflate_compressor, Free> compressor_;
};

}  // namespace tavlen
