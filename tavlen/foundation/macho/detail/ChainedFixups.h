#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "tavlen/foundation/macho/detail/BindTable.h"

namespace tavlen {

/// What a pointer holds that the loader has not fixed yet, in a chain of such pointers.
struct ChainedPointer {
  /// The forms of pointers, as in <mach-o/fixup-chains.h>. Those of kernels, firmware and caches
  /// are not among them.
  enum class Format : std::uint16_t {
    arm64e = 1,
    plain = 2,
    plainOffset = 6,
    arm64eUserland = 9,
    arm64eUserland24 = 12,
  };

  bool isBind = false;  ///< whether `value` is the index of an import, not an address
  std::uint64_t value = 0;

  /// Whether the pointers of the format can be read.
  static bool isReadable(Format format);
  /// Reads `word`; `base` is the address of the image's header.
  static ChainedPointer read(std::uint64_t word, Format format, std::uint64_t base);
};

/// The fixups of a newer image: the forms of the pointers by segment, and the imports.
///
/// The chains themselves are not followed, since each pointer can be read alone.
class ChainedFixups {
 public:
  /// Reads the tables in `bytes`. Throws MachOImage::Error.
  explicit ChainedFixups(std::string_view bytes);

  /// The form of the pointers in the segment of that index; nothing for a segment without any.
  std::optional<ChainedPointer::Format> formatOf(std::uint32_t segment) const;
  /// The import of that index, if there is one.
  std::optional<MachOImport> importNumbered(std::uint64_t index) const;

 private:
  enum class ImportFormat : std::uint32_t { plain = 1, addend = 2, addend64 = 3 };

  void readFormats(std::size_t start);

  std::string_view bytes_;
  std::vector<std::optional<ChainedPointer::Format>> formats_;  ///< by segment
  std::string_view imports_;
  std::string_view symbols_;
  ImportFormat importFormat_{};
};

}  // namespace tavlen
