#include "tests/macho/copies/Fixups.h"

namespace tavlen::macho {

namespace {

constexpr std::uint64_t bits(std::uint64_t value, unsigned first, unsigned count) {
  return value >> first & ((std::uint64_t{1} << count) - 1);
}

bool isARM64e(PointerFormat format) {
  return format != PointerFormat::plain && format != PointerFormat::plainOffset;
}

void markAsARM64e(ImageBytes& image) {
  image.set(ImageBytes::kSubtypeAt, std::uint32_t{0x80000002});
}

/// The fixups of an image, as the linker writes them: plain pointers and imports.
class ChainedFixups {
 public:
  /// One that loaders would change: an address or, for a symbol, the number of its import.
  struct Slot {
    std::size_t offset;  ///< in the file
    bool isImport;
    std::uint64_t target;
  };
  struct Import {
    std::int8_t ordinal;
    bool isWeak;
    std::string_view name;
  };
  /// The slots of one segment that has any.
  struct Chain {
    std::size_t segment;
    std::size_t start;  ///< the offset of the segment's record of starts
    std::vector<Slot> slots;
  };

  explicit ChainedFixups(const ImageBytes& image)
      : image_(image), at_(word(image.command(ImageBytes::kChainedFixups) + 8)) {}

  std::size_t startsAt() const { return at_ + word(at_ + 4); }
  std::size_t importsAt() const { return at_ + word(at_ + 8); }
  std::size_t symbolsAt() const { return at_ + word(at_ + 12); }

  std::vector<Import> imports() const {
    std::vector<Import> imports;
    for (std::size_t i = 0; i < word(at_ + 16); ++i) {
      const std::uint32_t each = word(importsAt() + 4 * i);
      imports.push_back({static_cast<std::int8_t>(each), bits(each, 8, 1) != 0,
                         image_.text(symbolsAt() + bits(each, 9, 23))});
    }
    return imports;
  }

  std::vector<Chain> chains() const {
    std::vector<Chain> chains;
    for (std::size_t i = 0; i < word(startsAt()); ++i) {
      const std::uint32_t start = word(startsAt() + 4 + 4 * i);
      if (start != 0) chains.push_back({i, startsAt() + start, slots(i, startsAt() + start)});
    }
    return chains;
  }

 private:
  static constexpr std::uint16_t kNoSlot = 0xFFFF;

  std::uint32_t word(std::size_t offset) const { return image_.get<std::uint32_t>(offset); }

  std::vector<Slot> slots(std::size_t segment, std::size_t start) const {
    if (image_.get<std::uint16_t>(start + 6) != static_cast<std::uint16_t>(PointerFormat::plain)) {
      throw std::runtime_error("the linker wrote another pointer format");
    }
    std::vector<Slot> slots;
    const std::size_t pageSize = image_.get<std::uint16_t>(start + 4);
    for (std::size_t page = 0; page < image_.get<std::uint16_t>(start + 20); ++page) {
      const auto first = image_.get<std::uint16_t>(start + 22 + 2 * page);
      if (first == kNoSlot) continue;
      std::size_t at = image_.segments()[segment].fileOffset + page * pageSize + first;
      for (std::uint64_t step = 1; step != 0; at += step) {
        const auto value = image_.get<std::uint64_t>(at);
        const bool isImport = bits(value, 63, 1) != 0;
        slots.push_back({at, isImport, bits(value, 0, isImport ? 24 : 36)});
        step = 4 * bits(value, 51, 12);
      }
    }
    return slots;
  }

  const ImageBytes& image_;
  std::size_t at_;
};

/// The value of a slot whose successor is `step` bytes further.
std::uint64_t encoded(const ChainedFixups::Slot& slot, PointerFormat format, std::uint64_t base,
                      std::uint64_t step, bool isSigned) {
  const std::uint64_t offset = slot.target - base;
  if (!isARM64e(format)) {
    const std::uint64_t target =
        slot.isImport || format == PointerFormat::plain ? slot.target : offset;
    return target | (step / 4) << 51 | std::uint64_t{slot.isImport} << 63;
  }
  if (step / 8 >= 1 << 11) throw std::runtime_error("slots are too far apart for a chain");
  std::uint64_t value = (step / 8) << 51 | std::uint64_t{slot.isImport} << 62;
  if (isSigned) {
    constexpr std::uint64_t kDiversity = 0x6AE1;  // any will do
    value |= std::uint64_t{1} << 63 | kDiversity << 32 | std::uint64_t{1} << 48;
  }
  if (slot.isImport) return value | slot.target;
  const bool isAddress = format == PointerFormat::arm64e && !isSigned;
  return value | (isAddress ? slot.target : offset);
}

/// Rewrites the slots as chains, of which each ends with its page; as a single one if `pageSize` is
/// 0.
void writeSlots(ImageBytes& image, const std::vector<ChainedFixups::Slot>& slots,
                PointerFormat format, std::uint64_t base, std::size_t pageSize) {
  for (std::size_t i = 0; i < slots.size(); ++i) {
    const bool isLast =
        i + 1 == slots.size() ||
        (pageSize != 0 && slots[i].offset / pageSize != slots[i + 1].offset / pageSize);
    const std::uint64_t step = isLast ? 0 : slots[i + 1].offset - slots[i].offset;
    image.set(slots[i].offset, encoded(slots[i], format, base, step, i % 2 == 1));
  }
}

std::string importTable(const std::vector<ChainedFixups::Import>& imports, ImportFormat format,
                        const std::vector<std::uint32_t>& names) {
  std::string table;
  for (std::size_t i = 0; i < imports.size(); ++i) {
    const auto& [ordinal, isWeak, name] = imports[i];
    if (format == ImportFormat::addend64) {
      table += bytesOf(std::uint64_t{static_cast<std::uint16_t>(ordinal)} |
                       std::uint64_t{isWeak} << 16 | std::uint64_t{names[i]} << 32);
      table += bytesOf(std::uint64_t{0});
      continue;
    }
    table += bytesOf(std::uint32_t{static_cast<std::uint8_t>(ordinal)} |
                     std::uint32_t{isWeak} << 8 | names[i] << 9);
    if (format == ImportFormat::addend) table += bytesOf(std::uint32_t{0});
  }
  return table;
}

void writeImports(ImageBytes& image, const ChainedFixups& fixups, ImportFormat format) {
  const auto imports = fixups.imports();
  std::string symbols(1, '\0');
  std::vector<std::uint32_t> names;
  for (const auto& each : imports) {
    names.push_back(static_cast<std::uint32_t>(symbols.size()));
    symbols.append(each.name).push_back('\0');
  }
  constexpr std::uint32_t kHeader = 32;  // seven words, and one so that imports are aligned
  const std::string starts(image.part(fixups.startsAt(), fixups.importsAt() - fixups.startsAt()));
  const auto startsSize = static_cast<std::uint32_t>(roundedUp(starts.size(), 8));
  const std::string table = importTable(imports, format, names);
  const auto tableSize = static_cast<std::uint32_t>(table.size());
  std::string data;
  for (const std::uint32_t word :
       {0U, kHeader, kHeader + startsSize, kHeader + startsSize + tableSize,
        static_cast<std::uint32_t>(imports.size()), static_cast<std::uint32_t>(format), 0U, 0U}) {
    data += bytesOf(word);
  }
  data += starts + std::string(startsSize - starts.size(), '\0') + table + symbols;
  const std::uint32_t offset = image.appendData(data);
  const std::size_t command = image.command(ImageBytes::kChainedFixups);
  image.set(command + 8, offset);
  image.set(command + 12, static_cast<std::uint32_t>(data.size()));
}

void appendULEB(std::string& bytes, std::uint64_t value) {
  for (; value >= 0x80; value >>= 7) bytes += static_cast<char>(value | 0x80);
  bytes += static_cast<char>(value);
}

/// The opcodes of a bind table whose rows are `imports`, and of a chain in each segment.
std::string threadedOpcodes(const ImageBytes& image,
                            const std::vector<ChainedFixups::Import>& imports,
                            const std::vector<ChainedFixups::Chain>& chains) {
  std::string opcodes = "\xD0";
  appendULEB(opcodes, imports.size());
  for (const auto& each : imports) {
    // Negative ordinals are special ones, written in the same four bits.
    opcodes += static_cast<char>((each.ordinal < 0 ? 0x30 : 0x10) | (each.ordinal & 15));
    opcodes += static_cast<char>(0x40 | (each.isWeak ? 1 : 0));
    opcodes.append(each.name).push_back('\0');
    opcodes += "\x51\x90";  // a pointer; another row
  }
  for (const auto& [segment, start, slots] : chains) {
    opcodes += static_cast<char>(0x70 | segment);
    appendULEB(opcodes, slots.front().offset - image.segments()[segment].fileOffset);
    opcodes += '\xD1';
  }
  return opcodes + '\0';
}

}  // namespace

ImageBytes withFixups(ImageBytes image, PointerFormat pointers, ImportFormat imports) {
  const ImageBytes original = image;
  const ChainedFixups fixups(original);
  for (const auto& [segment, start, slots] : fixups.chains()) {
    image.set(start + 6, static_cast<std::uint16_t>(pointers));
    writeSlots(image, slots, pointers, image.base(), image.get<std::uint16_t>(start + 4));
  }
  if (imports != ImportFormat::plain) writeImports(image, fixups, imports);
  if (isARM64e(pointers)) markAsARM64e(image);
  return image;
}

ImageBytes withThreadedOpcodes(ImageBytes image) {
  const ImageBytes original = image;
  const ChainedFixups fixups(original);
  const auto chains = fixups.chains();
  for (const auto& each : chains) {
    writeSlots(image, each.slots, PointerFormat::arm64e, image.base(), 0);
  }
  const std::string opcodes = threadedOpcodes(original, fixups.imports(), chains);
  const std::uint32_t offset = image.appendData(opcodes);
  const std::size_t exports = image.command(ImageBytes::kExports);
  const auto exportsAt = image.get<std::uint32_t>(exports + 8);
  const auto exportsSize = image.get<std::uint32_t>(exports + 12);
  image.removeCommand(ImageBytes::kChainedFixups);
  image.removeCommand(ImageBytes::kExports);
  image.addCommand(ImageBytes::kDyldInfo, {0, 0, offset, static_cast<std::uint32_t>(opcodes.size()),
                                           0, 0, 0, 0, exportsAt, exportsSize});
  markAsARM64e(image);
  return image;
}

}  // namespace tavlen::macho
