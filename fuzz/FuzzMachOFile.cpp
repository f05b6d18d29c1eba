// Every slice of any file is refused or can be asked for all that it holds: pointers and texts
// anywhere in its sections, within memory and time in proportion to the file.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>

#include "fuzz/Budget.h"
#include "fuzz/MemoryFile.h"
#include "tavlen/foundation/files/RandomAccessFile.h"
#include "tavlen/foundation/macho/MachOImage.h"

using namespace tavlen;

namespace {

/// Slices may cover each other, so that each of the 32 has the file's size.
constexpr fuzz::Budget kBudget = {.bytesPerByte = 32, .secondsPerByte = 1e-3};

void require(bool condition) {
  if (!condition) std::abort();
}

void askFor(const MachOImage::Pointer& pointer, const MachOImage& image) {
  using Kind = MachOImage::Pointer::Kind;
  require(pointer.kind == Kind::symbol || pointer.symbol.empty());
  if (pointer.kind != Kind::address) return;
  const auto text = image.memory().textAt(pointer.address);
  require(!text || text->size() < image.memory().sizeAt(pointer.address));
}

void readImage(const std::shared_ptr<const RandomAccessFile>& file, const MachOSlice& slice) {
  require(slice.offset + slice.size <= file->size());
  const MachOImage image(file, slice);
  static_cast<void>(image.platform() + image.minimumOS());
  std::uint64_t left = slice.size;  // sections may cover each other, too
  for (const MachOImage::Section& each : image.sections()) {
    const std::uint64_t size = std::min({each.size, image.memory().sizeAt(each.address), left});
    for (std::uint64_t i = 0; i + 8 <= size; i += 8)
      askFor(image.pointerAt(each.address + i), image);
    left -= size;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const fuzz::MemoryFile memory(data, size);
  fuzz::requireWithin(kBudget, size, [&] {
    const auto file = std::make_shared<const RandomAccessFile>(memory.path());
    const std::optional<MachOFile> fat = MachOFile::read(*file);
    if (!fat) return;
    require(!fat->slices().empty());
    for (const MachOSlice& each : fat->slices()) {
      try {
        readImage(file, each);
      } catch (const MachOImage::Error&) {  // a damaged one
      }
    }
  });
  return 0;
}
