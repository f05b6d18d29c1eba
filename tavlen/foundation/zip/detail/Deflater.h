#pragma once

#include <libdeflate.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tavlen {

/// Deflates at the fastest level. What a sample shows not to shrink, as pictures and archives, is
/// put into stored blocks instead. The same bytes always have the same result. Keeps a buffer as
/// large as the longest input that shrank, so that results take no more memory than they need.
///
/// Throws std::bad_alloc, and std::system_error (EIO) if a library reports a failure. Threads: one
/// object one thread at a time.
class Deflater {
 public:
  Deflater();

  /// The deflated form of `bytes`, which is complete.
  std::string whole(std::string_view bytes);
  /// A part of a deflated form, to be joined with those of the bytes before and after, which it
  /// does not refer to. The last one completes it.
  std::string block(std::string_view bytes, bool isLast);

 private:
  bool shrinks(std::string_view bytes);
  /// By zlib, which unlike the faster library makes parts that can be joined.
  std::string deflated(std::string_view bytes, int level, bool isLast);
  /// The buffer, with room for at least `count` bytes. What it held is lost.
  char* room(std::size_t count);

  struct Free {
    void operator()(libdeflate_compressor* compressor) const {
      libdeflate_free_compressor(compressor);
    }
  };
  std::unique_ptr<libdeflate_compressor, Free> compressor_;
  std::vector<char> buffer_;
};

}  // namespace tavlen
