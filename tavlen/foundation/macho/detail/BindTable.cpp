#include "tavlen/foundation/macho/detail/BindTable.h"

#include <algorithm>
#include <exception>

namespace tavlen {

namespace {

constexpr std::uint64_t kPointerSize = 8;

/// The high half of an opcode, as in <mach-o/loader.h>; the low half is a small operand.
enum Opcode : std::uint8_t {
  done = 0x00,
  setOrdinal = 0x10,
  setLargeOrdinal = 0x20,
  setSpecialOrdinal = 0x30,
  setSymbol = 0x40,
  setType = 0x50,
  setAddend = 0x60,
  setPlace = 0x70,
  addToAddress = 0x80,
  bind = 0x90,
  bindAndAdd = 0xA0,
  bindAndAddScaled = 0xB0,
  bindRepeatedly = 0xC0,
  threaded = 0xD0,
};

bool isOfInterest(std::string_view symbol) {
  return symbol.starts_with("_OBJC_CLASS_$_") || symbol.starts_with("__OBJC_PROTOCOL_$_");
}

}  // namespace

/// The state of the loader while it runs the opcodes.
class BindTable::Machine {
 public:
  Machine(BindTable& table, const std::vector<MachOMemory::Segment>& segments)
      : table_(table), segments_(segments), cursor_(table.opcodes_, "the bind opcodes") {
    for (const MachOMemory::Segment& segment : segments) mostRows_ += segment.size / kPointerSize;
  }

  void run() {
    while (!cursor_.isAtEnd()) {
      const auto byte = cursor_.number<std::uint8_t>();
      constexpr std::uint8_t kOperand = 0x0F;
      if ((byte & ~kOperand) == Opcode::done) return;
      step(Opcode(byte & ~kOperand), byte & kOperand);
    }
  }

 private:
  void step(Opcode opcode, std::uint8_t operand) {
    switch (opcode) {
      case setOrdinal:
        ordinal_ = operand;
        return;
      case setLargeOrdinal:
        ordinal_ = static_cast<std::int32_t>(cursor_.groupedNumber());
        return;
      case setSpecialOrdinal:  // a negative number of four bits
        ordinal_ = operand == 0 ? 0 : static_cast<std::int32_t>(operand) - 16;
        return;
      case setSymbol: {
        const auto start = static_cast<std::uint32_t>(cursor_.position());
        symbol_ = isOfInterest(cursor_.text()) ? start : kOther;
        return;
      }
      case setType:
        return;
      case setAddend:  // for data, not for classes; skipped as an unsigned number is
        cursor_.groupedNumber();
        return;
      case setPlace:
        return setAddress(operand);
      case addToAddress:
        address_ += cursor_.groupedNumber();
        return;
      case bind:
        return table_.isThreaded_ ? addImport() : bindTimes(1, 0);
      case bindAndAdd:
        return bindTimes(1, cursor_.groupedNumber());
      case bindAndAddScaled:
        return bindTimes(1, operand * kPointerSize);
      case bindRepeatedly: {
        const std::uint64_t count = cursor_.groupedNumber();
        return bindTimes(count, cursor_.groupedNumber());
      }
      case threaded:
        return stepThreaded(operand);
      default:
        cursor_.fail("have an unknown opcode");
    }
  }

  void setAddress(std::uint8_t segment) {
    const std::uint64_t offset = cursor_.groupedNumber();
    const auto found = std::lower_bound(
        segments_.begin(), segments_.end(), segment,
        [](const MachOMemory::Segment& each, std::uint8_t index) { return each.index < index; });
    // A segment without bytes in the file holds no class.
    const bool isFound = found != segments_.end() && found->index == segment;
    address_ = isFound ? found->address + offset : offset;
    isPlaced_ = isFound;
  }

  void bindTimes(std::uint64_t count, std::uint64_t skip) {
    const std::uint64_t stride = kPointerSize + skip;
    if (symbol_ != kOther && isPlaced_) {
      for (std::uint64_t i = 0; i < count; ++i) addRow(address_ + i * stride);
    }
    address_ += count * stride;
  }

  void addImport() { addRow(table_.rows_.size()); }

  void addRow(std::uint64_t address) {
    if (table_.rows_.size() >= mostRows_) cursor_.fail("bind more pointers than the image has");
    table_.rows_.push_back({address, symbol_, ordinal_});
  }

  void stepThreaded(std::uint8_t operand) {
    constexpr std::uint8_t kSetTableSize = 0;
    table_.isThreaded_ = true;
    if (operand == kSetTableSize) cursor_.groupedNumber();
  }

  BindTable& table_;
  const std::vector<MachOMemory::Segment>& segments_;
  ByteCursor cursor_;
  std::uint64_t mostRows_ = 0;
  std::uint64_t address_ = 0;
  bool isPlaced_ = false;  ///< whether the address is in a segment with bytes
  std::uint32_t symbol_ = kOther;
  std::int32_t ordinal_ = 0;
};

BindTable::BindTable(std::string_view opcodes, const std::vector<MachOMemory::Segment>& segments)
    : opcodes_(opcodes) {
  try {
    Machine(*this, segments).run();
  } catch (const MachOImage::Error& error) {
    fault_ = error.description();
  }
  const auto byAddress = [](const Row& left, const Row& right) {
    return left.address < right.address;
  };
  if (!std::is_sorted(rows_.begin(), rows_.end(), byAddress)) {
    std::stable_sort(rows_.begin(), rows_.end(), byAddress);
  }
}

MachOImport BindTable::importOf(const Row& row) const {
  if (row.symbol == kOther) return {};
  const std::string_view rest = opcodes_.substr(row.symbol);
  return {rest.substr(0, rest.find('\0')), row.ordinal};
}

std::optional<MachOImport> BindTable::importAt(std::uint64_t address) const {
  const auto row =
      std::lower_bound(rows_.begin(), rows_.end(), address,
                       [](const Row& each, std::uint64_t value) { return each.address < value; });
  if (row == rows_.end() || row->address != address) return std::nullopt;
  return importOf(*row);
}

std::optional<MachOImport> BindTable::importNumbered(std::size_t index) const {
  if (index >= rows_.size()) return std::nullopt;
  return importOf(rows_[index]);
}

}  // namespace tavlen
