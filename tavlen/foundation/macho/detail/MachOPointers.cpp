#include "tavlen/foundation/macho/detail/MachOPointers.h"

#include <algorithm>

namespace tavlen {

namespace {

using Pointer = MachOImage::Pointer;

/// The bytes of `range`; fewer where the image ends.
std::string_view bytesOf(MachOCommands::Range range, FilePages& image) {
  if (range.offset >= image.size()) return {};
  return image.bytes(range.offset, std::min<std::size_t>(range.size, image.size() - range.offset));
}

Pointer pointerTo(const std::optional<MachOImport>& import) {
  if (!import) return {Pointer::Kind::unreadable, 0, {}, 0};
  return {Pointer::Kind::symbol, 0, import->symbol, import->ordinal};
}

}  // namespace

MachOPointers::MachOPointers(const MachOCommands& commands, FilePages& image)
    : base_(commands.base) {
  if (commands.chainedFixups) {
    try {
      chains_.emplace(bytesOf(*commands.chainedFixups, image));
    } catch (const MachOImage::Error& error) {
      isReadable_ = false;
      fault_ = error.description();
    }
  } else if (commands.binds) {
    binds_.emplace(bytesOf(*commands.binds, image), commands.segments);
    fault_ = binds_->fault();
  }
}

Pointer MachOPointers::chained(std::uint64_t word, ChainedPointer::Format format) const {
  const ChainedPointer pointer = ChainedPointer::read(word, format, base_);
  if (!pointer.isBind) return {Pointer::Kind::address, pointer.value, {}, 0};
  return pointerTo(chains_ ? chains_->importNumbered(pointer.value)
                           : binds_->importNumbered(pointer.value));
}

Pointer MachOPointers::pointerAt(const MachOMemory& memory, std::uint64_t address) const {
  constexpr Pointer kUnreadable = {Pointer::Kind::unreadable, 0, {}, 0};
  const std::optional<std::uint64_t> word = memory.numberAt<std::uint64_t>(address);
  if (!word || !isReadable_) return kUnreadable;
  if (chains_) {
    if (*word == 0) return {};
    const auto format = chains_->formatOf(memory.segmentAt(address)->index);
    if (!format || !ChainedPointer::isReadable(*format)) return kUnreadable;
    return chained(*word, *format);
  }
  if (binds_ && binds_->isThreaded()) {
    return *word == 0 ? Pointer{} : chained(*word, ChainedPointer::Format::arm64e);
  }
  if (*word != 0) return {Pointer::Kind::address, *word, {}, 0};
  const auto import = binds_ ? binds_->importAt(address) : std::nullopt;
  return import ? pointerTo(import) : Pointer{};
}

}  // namespace tavlen
