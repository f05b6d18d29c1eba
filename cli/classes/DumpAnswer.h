#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tavlen::cli {

/// How the child of dumpInChild() begins its answer: with a byte for the kind, and the number of
/// bytes that follow as a little-endian number.
struct DumpAnswer {
  /// What follows.
  enum class Kind : char {
    classes = 'c',    ///< the classes as a keyed archive
    notLoaded = 'n',  ///< nothing: the image cannot be loaded
    failed = 'f',     ///< the text of another error
  };

  /// The bytes of a written beginning.
  static constexpr std::size_t kBytes = 1 + sizeof(std::uint64_t);

  Kind kind = Kind::failed;  ///< any byte, if read from one
  std::uint64_t size = 0;    ///< the number of bytes that follow

  /// The beginning in kBytes bytes.
  std::string written() const;
  /// Reads written(). `bytes` must hold kBytes.
  static DumpAnswer read(std::string_view bytes);
};

}  // namespace tavlen::cli
