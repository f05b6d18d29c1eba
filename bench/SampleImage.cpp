#include "SampleImage.h"

#include <cstdint>
#include <cstring>
#include <map>
#include <string_view>
#include <unordered_map>

namespace tavlen::bench {

namespace {

constexpr std::size_t kPage = 0x4000;
constexpr std::size_t kClassSize = 40;
constexpr std::uint32_t kARM64 = 0x0100000C;
constexpr std::uint32_t kDylib = 6;
constexpr std::uint32_t kVersion = 15 << 16;
// Load commands.
constexpr std::uint32_t kSegment = 0x19;
constexpr std::uint32_t kSymbolTable = 0x02;
constexpr std::uint32_t kLoadDylib = 0x0C;
constexpr std::uint32_t kIdDylib = 0x0D;
constexpr std::uint32_t kBuildVersion = 0x32;
constexpr std::uint32_t kDyldInfo = 0x80000022;

template <class... Numbers>
void append(std::string& bytes, Numbers... values) {
  (bytes.append(reinterpret_cast<const char*>(&values), sizeof values), ...);
}

void pad(std::string& bytes, std::size_t unit) {
  bytes.resize((bytes.size() + unit - 1) / unit * unit);
}

void appendName(std::string& bytes, std::string_view name, std::size_t size) {
  bytes.append(name).append(size - name.size(), '\0');
}

void appendULEB(std::string& bytes, std::uint64_t value) {
  for (; value >= 0x80; value >>= 7) bytes += static_cast<char>(value | 0x80);
  bytes += static_cast<char>(value);
}

/// A part of the file; the addresses in the image are the offsets in the file.
struct Range {
  std::uint64_t begin, end;
  std::uint64_t size() const { return end - begin; }
};

class ImageWriter {
 public:
  explicit ImageWriter(const std::vector<std::shared_ptr<ObjCClass>>& classes)
      : classes_(classes) {}

  std::string write(std::size_t code) {
    file_.resize(kPage + code);
    writeTexts();
    const Range text = {0, file_.size()};
    writeData();
    const Range data = {text.end, file_.size()};
    writeLinkerData();
    writeHeader(text, data, {data.end, file_.size()});
    return std::move(file_);
  }

 private:
  void addText(const SharedText& text) {
    if (texts_.try_emplace(text, file_.size()).second) file_.append(text).push_back('\0');
  }

  void writeTexts() {
    texts_.reserve(classes_.size() * 12);
    strings_.begin = file_.size();
    for (const auto& cls : classes_) {
      addText(cls->name);
      for (const auto& each : cls->protocols) addText(each);
      for (const auto& each : cls->methods) {
        addText(each->selector);
        addText(each->encoding);
      }
    }
    strings_.end = file_.size();
    pad(file_, kPage);
  }

  /// Sets the eight bytes at `slot`.
  void setPointer(std::uint64_t slot, std::uint64_t target) {
    std::memcpy(file_.data() + slot, &target, sizeof target);
  }

  void writeData() {
    list_ = {file_.size(), file_.size() + 8 * classes_.size()};
    file_.resize(list_.end);
    info_ = {list_.end, list_.end + 8};
    append(file_, 0U, 0x40U);  // categories have class properties
    records_ = {info_.end, info_.end + 2 * kClassSize * classes_.size()};
    file_.resize(records_.end);
    std::uint64_t record = records_.begin;
    for (std::size_t i = 0; i < classes_.size(); ++i, record += 2 * kClassSize) {
      setPointer(list_.begin + 8 * i, record);
      writeClass(*classes_[i], record);
    }
    constants_ = {records_.end, file_.size()};
    pad(file_, kPage);
  }

  /// The class's record, and its metaclass's next to it.
  void writeClass(const ObjCClass& cls, std::uint64_t record) {
    const std::uint64_t meta = record + kClassSize;
    setPointer(record, meta);
    binds_["_OBJC_METACLASS_$_NSObject"].push_back(meta);
    if (cls.supercls) {
      binds_["_OBJC_CLASS_$_" + cls.supercls->str()].push_back(record + 8);
      binds_["_OBJC_METACLASS_$_" + cls.supercls->str()].push_back(meta + 8);
    }
    const std::uint64_t protocols = writeProtocols(cls.protocols);
    for (const bool isMeta : {false, true}) {
      const std::uint64_t methods = writeMethods(cls.methods, isMeta);
      setPointer((isMeta ? meta : record) + 32, file_.size());
      append(file_, std::uint32_t{isMeta}, 8U, 8U, 0U, std::uint64_t{0}, texts_.at(cls.name),
             methods, isMeta ? 0 : protocols, std::uint64_t{0}, std::uint64_t{0}, std::uint64_t{0});
    }
  }

  /// Writes the class or instance methods; returns the list's address, 0 for none.
  std::uint64_t writeMethods(const ObjCClass::Methods& methods, bool isMeta) {
    const std::uint64_t list = file_.size();
    append(file_, 24U, 0U);
    std::uint32_t count = 0;
    for (const auto& each : methods) {
      if (each->isClassMethod != isMeta) continue;
      const std::uint64_t implementation = kPage;
      append(file_, texts_.at(each->selector), texts_.at(each->encoding), implementation);
      ++count;
    }
    std::memcpy(file_.data() + list + 4, &count, sizeof count);
    if (count == 0) file_.resize(list);
    return count == 0 ? 0 : list;
  }

  std::uint64_t writeProtocols(const std::vector<SharedText>& names) {
    if (names.empty()) return 0;
    for (const SharedText& each : names) {
      const auto [found, isNew] = protocols_.try_emplace(each, file_.size());
      if (!isNew) continue;
      const std::uint64_t name = texts_.at(each);
      append(file_, std::uint64_t{0}, name);
      file_.append(48, '\0');
      append(file_, 96U, 0U);
      file_.append(24, '\0');
    }
    const std::uint64_t list = file_.size();
    append(file_, std::uint64_t{names.size()});
    for (const SharedText& each : names) append(file_, protocols_.at(each));
    append(file_, std::uint64_t{0});
    return list;
  }

  void writeLinkerData() {
    fixups_.begin = file_.size();
    for (const auto& [symbol, slots] : binds_) {
      // The first library is UIKit; a pointer.
      file_.append(std::string_view("\x11\x40", 2)).append(symbol) += '\0';
      file_ += '\x51';
      for (const std::uint64_t slot : slots) {
        file_ += '\x71';  // in the second segment
        appendULEB(file_, slot - list_.begin);
        file_ += '\x90';
      }
    }
    file_ += '\0';
    fixups_.end = file_.size();
    pad(file_, 8);
    symbols_.begin = file_.size();
    std::string names(1, '\0');
    std::uint64_t record = records_.begin;
    for (const auto& each : classes_) {
      for (const char* prefix : {"_OBJC_CLASS_$_", "_OBJC_METACLASS_$_"}) {
        constexpr std::uint8_t kExternalInSection = 0x0F;
        constexpr std::uint8_t kRecordsSection = 4;
        append(file_, static_cast<std::uint32_t>(names.size()), kExternalInSection, kRecordsSection,
               std::uint16_t{0}, record);
        names.append(prefix).append(each->name).push_back('\0');
        record += kClassSize;
      }
    }
    symbols_.end = names_.begin = file_.size();
    file_ += names;
    names_.end = file_.size();
    pad(file_, 8);
  }

  struct Section {
    std::string_view name;
    Range range;
  };

  void addSegment(std::string_view name, Range range, const std::vector<Section>& sections = {}) {
    std::string command;
    appendName(command, name, 16);
    const std::uint64_t memory = (range.size() + kPage - 1) / kPage * kPage;
    append(command, range.begin, memory, range.begin, range.size(), 3U, 3U,
           static_cast<std::uint32_t>(sections.size()), 0U);
    for (const Section& each : sections) {
      appendName(command, each.name, 16);
      appendName(command, name, 16);
      append(command, each.range.begin, each.range.size(),
             static_cast<std::uint32_t>(each.range.begin), 3U, 0U, 0U, 0U, 0U, 0U, 0U);
    }
    addCommand(kSegment, command);
  }

  void addDylib(std::uint32_t number, std::string_view name) {
    std::string command;
    append(command, 24U, 0U, kVersion, kVersion);
    command.append(name) += '\0';
    addCommand(number, command);
  }

  void addCommand(std::uint32_t number, std::string command) {
    pad(command, 8);
    append(commands_, number, static_cast<std::uint32_t>(command.size() + 8));
    commands_ += command;
    ++commandCount_;
  }

  void writeHeader(Range text, Range data, Range linkerData) {
    const auto word = [](std::uint64_t value) { return static_cast<std::uint32_t>(value); };
    addSegment("__TEXT", text, {{"__cstring", strings_}});
    addSegment("__DATA", data,
               {{"__objc_classlist", list_},
                {"__objc_imageinfo", info_},
                {"__objc_data", records_},
                {"__objc_const", constants_}});
    addSegment("__LINKEDIT", linkerData);
    addDylib(kIdDylib, "@rpath/Sample.framework/Sample");
    addDylib(kLoadDylib, "/System/Library/Frameworks/UIKit.framework/UIKit");
    std::string fields;
    append(fields, 0U, 0U, word(fixups_.begin), word(fixups_.size()), 0U, 0U, 0U, 0U, 0U, 0U);
    addCommand(kDyldInfo, std::exchange(fields, {}));
    append(fields, word(symbols_.begin), word(symbols_.size() / 16), word(names_.begin),
           word(names_.size()));
    addCommand(kSymbolTable, std::exchange(fields, {}));
    append(fields, 2U, kVersion, kVersion, 0U);
    addCommand(kBuildVersion, fields);
    std::string header;
    append(header, 0xFEEDFACFU, kARM64, 0U, kDylib, commandCount_, word(commands_.size()), 0x85U,
           0U);
    header += commands_;
    file_.replace(0, header.size(), header);
  }

  const std::vector<std::shared_ptr<ObjCClass>>& classes_;
  std::string file_;
  std::unordered_map<SharedText, std::uint64_t> texts_;      ///< by text: the address
  std::unordered_map<SharedText, std::uint64_t> protocols_;  ///< by name: the record's address
  std::map<std::string, std::vector<std::uint64_t>> binds_;  ///< by symbol: its slots
  Range strings_{}, list_{}, info_{}, records_{}, constants_{}, fixups_{}, symbols_{}, names_{};
  std::string commands_;
  std::uint32_t commandCount_ = 0;
};

}  // namespace

std::string sampleImage(const std::vector<std::shared_ptr<ObjCClass>>& classes, std::size_t code) {
  return ImageWriter(classes).write(code);
}

}  // namespace tavlen::bench
