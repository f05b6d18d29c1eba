#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tavlen/foundation/files/FilePages.h"
#include "tavlen/foundation/macho/MachOImage.h"
#include "tavlen/foundation/macho/MachOMemory.h"
#include "tavlen/foundation/macho/detail/BindTable.h"
#include "tavlen/foundation/macho/detail/ChainedFixups.h"
#include "tavlen/foundation/macho/detail/MachOCommands.h"

namespace tavlen {

/// The pointers of an image as the loader would fix them, under each of its schemes: plain
/// addresses with opcodes for imports, the chains of arm64e before iOS 14, chained fixups.
class MachOPointers {
 public:
  /// Reads the tables of `image`. Malformed ones leave a fault. Throws std::system_error when
  /// reading fails.
  MachOPointers(const MachOCommands& commands, FilePages& image);

  /// The pointer at `address` in `memory`. Throws as above.
  MachOImage::Pointer pointerAt(const MachOMemory& memory, std::uint64_t address) const;
  /// Why some pointers cannot be read; empty if all can.
  const std::string& fault() const { return fault_; }

 private:
  MachOImage::Pointer chained(std::uint64_t word, ChainedPointer::Format format) const;

  std::uint64_t base_;
  std::optional<BindTable> binds_;
  std::optional<ChainedFixups> chains_;
  bool isReadable_ = true;  ///< whether the scheme of the pointers is known
  std::string fault_;
};

}  // namespace tavlen
