#include "tavlen/foundation/macho/detail/ChainedFixups.h"

#include "tavlen/foundation/base/LittleEndian.h"

namespace tavlen {

namespace {

constexpr std::string_view kTable = "the chained fixups";

/// `count` bits of `word`, from the bit `first` on.
constexpr std::uint64_t bits(std::uint64_t word, unsigned first, unsigned count) {
  return word >> first & ((std::uint64_t{1} << count) - 1);
}

/// A library ordinal of `width` bits, of which the highest 15 are negative.
int signedOrdinal(std::uint64_t ordinal, unsigned width) {
  constexpr int kSpecials = 15;
  const int limit = 1 << width;
  const int value = static_cast<int>(ordinal);
  return value >= limit - kSpecials ? value - limit : value;
}

ChainedPointer readARM64E(std::uint64_t word, ChainedPointer::Format format, std::uint64_t base) {
  using Format = ChainedPointer::Format;
  const bool isSigned = bits(word, 63, 1) != 0;
  const bool isBind = bits(word, 62, 1) != 0;
  if (isBind) return {true, bits(word, 0, format == Format::arm64eUserland24 ? 24 : 16)};
  if (isSigned) return {false, base + bits(word, 0, 32)};
  const std::uint64_t target = bits(word, 0, 43);
  return {false, format == Format::arm64e ? target : base + target};
}

}  // namespace

bool ChainedPointer::isReadable(Format format) {
  switch (format) {
    case Format::arm64e:
    case Format::plain:
    case Format::plainOffset:
    case Format::arm64eUserland:
    case Format::arm64eUserland24:
      return true;
  }
  return false;
}

ChainedPointer ChainedPointer::read(std::uint64_t word, Format format, std::uint64_t base) {
  if (format != Format::plain && format != Format::plainOffset) {
    return readARM64E(word, format, base);
  }
  if (bits(word, 63, 1) != 0) return {true, bits(word, 0, 24)};
  // The byte at bit 36, which the loader moves to the top of the pointer, is no part of an address.
  const std::uint64_t target = bits(word, 0, 36);
  return {false, format == Format::plain ? target : base + target};
}

ChainedFixups::ChainedFixups(std::string_view bytes) : bytes_(bytes) {
  ByteCursor header(bytes, kTable);
  if (header.number<std::uint32_t>() != 0) header.fail("have an unknown version");
  const auto starts = header.number<std::uint32_t>();
  const auto imports = header.number<std::uint32_t>();
  const auto symbols = header.number<std::uint32_t>();
  const std::uint64_t importCount = header.number<std::uint32_t>();
  importFormat_ = ImportFormat{header.number<std::uint32_t>()};
  if (header.number<std::uint32_t>() != 0) header.fail("have compressed symbols");
  if (starts > bytes.size() || imports > bytes.size() || symbols > bytes.size()) {
    header.fail("point outside of themselves");
  }
  std::uint64_t importSize = 0;
  switch (importFormat_) {
    case ImportFormat::plain:
      importSize = 4;
      break;
    case ImportFormat::addend:
      importSize = 8;
      break;
    case ImportFormat::addend64:
      importSize = 16;
      break;
    default:
      header.fail("have imports of an unknown format");
  }
  if (importCount > (bytes.size() - imports) / importSize) header.fail("have too few imports");
  imports_ = bytes.substr(imports, importCount * importSize);
  symbols_ = bytes.substr(symbols);
  readFormats(starts);
}

void ChainedFixups::readFormats(std::size_t start) {
  constexpr std::size_t kFormatOffset = 6;  // after a segment's size of record and of page
  ByteCursor table(bytes_.substr(start), kTable);
  const auto count = table.number<std::uint32_t>();
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint64_t offset = table.number<std::uint32_t>();
    std::optional<ChainedPointer::Format>& format = formats_.emplace_back();
    if (offset == 0) continue;
    if (start + offset > bytes_.size()) table.fail("point outside of themselves");
    ByteCursor record(bytes_.substr(start + offset), kTable);
    record.bytes(kFormatOffset);
    format = ChainedPointer::Format{record.number<std::uint16_t>()};
  }
}

std::optional<ChainedPointer::Format> ChainedFixups::formatOf(std::uint32_t segment) const {
  return segment < formats_.size() ? formats_[segment] : std::nullopt;
}

std::optional<MachOImport> ChainedFixups::importNumbered(std::uint64_t index) const {
  // The ordinal has 8 bits, or 16 in the wide form; then a bit, or 16, for a weak import.
  const bool isWide = importFormat_ == ImportFormat::addend64;
  const std::size_t size = isWide ? 16 : importFormat_ == ImportFormat::addend ? 8 : 4;
  if (index >= imports_.size() / size) return std::nullopt;
  const std::string_view row = imports_.substr(index * size, size);
  const std::uint64_t word =
      isWide ? littleEndian<std::uint64_t>(row, 0) : littleEndian<std::uint32_t>(row, 0);
  const std::uint64_t name = isWide ? bits(word, 32, 32) : bits(word, 9, 23);
  if (name >= symbols_.size()) return std::nullopt;
  const std::string_view rest = symbols_.substr(name);
  const std::size_t end = rest.find('\0');
  if (end == std::string_view::npos) return std::nullopt;
  const unsigned ordinalBits = isWide ? 16 : 8;
  return MachOImport{rest.substr(0, end), signedOrdinal(bits(word, 0, ordinalBits), ordinalBits)};
}

}  // namespace tavlen
