#pragma once

#include <cstdint>

#include "tests/macho/copies/ImageBytes.h"

namespace tavlen::macho {

/// Pointer formats of chained fixups.
enum class PointerFormat : std::uint16_t {
  arm64e = 1,
  plain = 2,
  plainOffset = 6,
  arm64eUserland = 9,
  arm64eUserland24 = 12
};

/// Forms of the table of imported symbols.
enum class ImportFormat : std::uint32_t { plain = 1, addend = 2, addend64 = 3 };

/// A copy of `image`, which has chained fixups as the linker writes them, with pointers and imports
/// in these forms. In the forms of arm64e every other pointer is signed, and the image is marked as
/// one of arm64e.
ImageBytes withFixups(ImageBytes image, PointerFormat pointers,
                      ImportFormat imports = ImportFormat::plain);

/// The same with the opcodes that arm64e images had before chained fixups.
ImageBytes withThreadedOpcodes(ImageBytes image);

}  // namespace tavlen::macho
