#include "tavlen/foundation/plist/detail/XMLPropertyListWriter.h"

#include <algorithm>
#include <string_view>

#include "tavlen/foundation/plist/detail/XMLPropertyListScalars.h"
#include "tavlen/foundation/text/Base64.h"
#include "tavlen/foundation/text/Unicode.h"

namespace tavlen {

namespace {

using Index = PropertyList::Index;

/// The reader's XML library accepts no deeper lists.
constexpr std::size_t kDeepest = 250;
/// The values allowed beyond those of the list itself: by shared references, a small list can
/// describe a huge tree.
constexpr std::size_t kSharedValues = 1'000'000;
constexpr std::size_t kMostBytes = std::size_t{256} << 20;

constexpr std::string_view kHeader =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n";

/// Whether XML can contain `text`: it lacks U+FFFE, U+FFFF, and control characters other than tab
/// and line ends.
bool isTextForXML(std::string_view text) {
  const auto isControl = [](char c) {
    return static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r';
  };
  return std::none_of(text.begin(), text.end(), isControl) &&
         text.find("\xEF\xBF\xBE") == std::string_view::npos &&
         text.find("\xEF\xBF\xBF") == std::string_view::npos && isValidUTF8(text);
}

class Writer {
 public:
  explicit Writer(const PropertyList& list)
      : list_(list), valuesLeft_(kSharedValues + list.size() + list.referenceCount()) {}

  std::string write() {
    out_ = kHeader;
    appendValue(list_.root());
    while (!frames_.empty()) {
      Frame& frame = frames_.back();
      if (frame.next == frame.members.size()) {
        const std::string_view tag = frame.tag;
        frames_.pop_back();
        appendIndent();
        out_.append("</").append(tag).append(">\n");
        continue;
      }
      const PropertyList::Member member = frame.members[frame.next++];
      if (frame.tag == "dict") appendTextElement("key", list_.string(member.key));
      appendValue(member.value);
    }
    out_ += "</plist>\n";
    return std::move(out_);
  }

 private:
  /// An open container. Array elements are members without meaningful keys.
  struct Frame {
    std::string_view tag;
    std::vector<PropertyList::Member> members;
    std::size_t next = 0;
  };

  [[noreturn]] static void throwTooLarge() {
    throw EncodingError::invalidValue("the property list is too large for XML");
  }

  void charge(std::size_t values) {
    if (values > valuesLeft_ || out_.size() > kMostBytes) throwTooLarge();
    valuesLeft_ -= values;
  }

  /// Charges for all keys, because sorting reads their texts, even those of equal keys that are not
  /// written.
  void chargeKeys(std::span<const PropertyList::Member> members) {
    charge(members.size());
    for (const PropertyList::Member& member : members) {
      const std::size_t bytes = list_.string(member.key).size();
      if (bytes > keyBytesLeft_) throwTooLarge();
      keyBytesLeft_ -= bytes;
    }
  }

  void appendValue(Index index) {
    charge(1);
    std::visit([this](const auto& value) { append(value); }, list_.node(index));
  }

  void appendIndent() { out_.append(frames_.size(), '\t'); }

  void appendElement(std::string_view tag, std::string_view text) {
    appendIndent();
    out_.append("<").append(tag).append(">").append(text).append("</").append(tag).append(">\n");
  }

  void appendTextElement(std::string_view tag, std::string_view text) {
    if (!isTextForXML(text)) {
      throw EncodingError::invalidValue("a string contains a character that XML does not allow");
    }
    std::string escaped;
    escaped.reserve(text.size());
    for (const char c : text) {
      switch (c) {
        case '&':
          escaped += "&amp;";
          break;
        case '<':
          escaped += "&lt;";
          break;
        case '>':
          escaped += "&gt;";
          break;
        case '\r':  // the reader would turn a bare one into a line feed
          escaped += "&#13;";
          break;
        default:
          escaped += c;
      }
    }
    appendElement(tag, escaped);
  }

  void append(bool value) {
    appendIndent();
    out_ += value ? "<true/>\n" : "<false/>\n";
  }
  void append(std::int64_t value) { appendElement("integer", std::to_string(value)); }
  void append(std::uint64_t value) { appendElement("integer", std::to_string(value)); }
  void append(double value) { appendElement("real", xmlFromReal(value)); }
  void append(Date value) {
    const auto text = xmlFromDate(value);
    if (!text) throw EncodingError::invalidValue("a date is outside the years 0 to 9999");
    appendElement("date", *text);
  }
  void append(std::string_view value) { appendTextElement("string", value); }

  void append(PropertyList::Data value) {
    // At most 76 columns, a tab counting as 8. Beyond a depth of 8 the lines do not get shorter.
    const std::size_t indent = std::min<std::size_t>(frames_.size(), 8) * 8;
    const std::size_t lineLength = (76 - indent) / 4 * 4;
    const std::string text = base64FromBytes(value.bytes);
    appendIndent();
    out_ += "<data>\n";
    for (std::size_t i = 0; i < text.size(); i += lineLength) {
      appendIndent();
      out_.append(text, i, lineLength).append("\n");
    }
    appendIndent();
    out_ += "</data>\n";
  }

  void append(PropertyList::UID value) {
    open("dict", {});
    appendElement("key", "CF$UID");
    append(value.value);
  }

  void append(PropertyList::Array value) {
    if (value.elements.empty()) return appendEmpty("<array/>\n");
    std::vector<PropertyList::Member> members;
    members.reserve(value.elements.size());
    for (const Index element : value.elements) members.push_back({element, element});
    open("array", std::move(members));
  }

  void append(PropertyList::Dictionary value) {
    if (value.members.empty()) return appendEmpty("<dict/>\n");
    chargeKeys(value.members);
    const auto key = [this](const PropertyList::Member& m) { return list_.string(m.key); };
    std::vector<PropertyList::Member> members(value.members.rbegin(), value.members.rend());
    std::stable_sort(members.begin(), members.end(), [&](const auto& a, const auto& b) {
      return a.key != b.key && key(a) < key(b);
    });
    const auto repeated = [&](const auto& a, const auto& b) {
      return a.key == b.key || key(a) == key(b);
    };
    members.erase(std::unique(members.begin(), members.end(), repeated), members.end());
    open("dict", std::move(members));
  }

  void appendEmpty(std::string_view element) {
    appendIndent();
    out_ += element;
  }

  void open(std::string_view tag, std::vector<PropertyList::Member> members) {
    if (frames_.size() >= kDeepest) {
      throw EncodingError::invalidValue("nested deeper than " + std::to_string(kDeepest) +
                                        " containers, which XML property lists do not hold");
    }
    appendIndent();
    out_.append("<").append(tag).append(">\n");
    frames_.push_back({tag, std::move(members)});
  }

  const PropertyList& list_;
  std::string out_;
  std::vector<Frame> frames_;
  std::size_t valuesLeft_;
  std::size_t keyBytesLeft_ = kMostBytes;
};

}  // namespace

std::string writeXMLPropertyList(const PropertyList& list) { return Writer(list).write(); }

}  // namespace tavlen
