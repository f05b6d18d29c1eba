#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "tavlen/foundation/macho/MachOMemory.h"
#include "tavlen/foundation/macho/detail/ByteCursor.h"

namespace tavlen {

/// A class or protocol of another image, and the library that it is searched in.
struct MachOImport {
  std::string_view symbol;
  int ordinal = 0;
};

/// The pointers that opcodes bind to classes and protocols of other images: what the loader's bind
/// opcodes say, without other symbols.
class BindTable {
 public:
  /// Runs the opcodes. `segments` are sorted by index. Keeps the rows before a malformed opcode;
  /// fault() then tells why.
  BindTable(std::string_view opcodes, const std::vector<MachOMemory::Segment>& segments);

  /// The import at `address`, if any.
  std::optional<MachOImport> importAt(std::uint64_t address) const;

  /// Whether the pointers are in chains, in the form of arm64e before iOS 14. Those that are bound
  /// hold an index into the imports.
  bool isThreaded() const { return isThreaded_; }
  /// The import of that index, of a threaded image; its symbol is empty for another kind of symbol.
  std::optional<MachOImport> importNumbered(std::size_t index) const;

  /// Why the opcodes could not be read to their end; empty if they could.
  const std::string& fault() const { return fault_; }

 private:
  /// A bound pointer, or an import of a threaded image. 16 bytes, because a table may be larger
  /// than its opcodes.
  struct Row {
    std::uint64_t address;
    std::uint32_t symbol;  ///< its place in the opcodes; kOther for a symbol of another kind
    std::int32_t ordinal;
  };
  class Machine;
  static constexpr std::uint32_t kOther = UINT32_MAX;

  MachOImport importOf(const Row& row) const;

  std::string_view opcodes_;
  std::vector<Row> rows_;  ///< sorted by address, or by index if threaded
  bool isThreaded_ = false;
  std::string fault_;
};

}  // namespace tavlen
