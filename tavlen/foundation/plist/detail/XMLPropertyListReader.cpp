#include "tavlen/foundation/plist/detail/XMLPropertyListReader.h"

#include <libxml/parser.h>
#include <libxml/xmlreader.h>

#include <limits>
#include <memory>

#include "tavlen/foundation/plist/PropertyListBuilder.h"
#include "tavlen/foundation/plist/detail/XMLPrescan.h"
#include "tavlen/foundation/plist/detail/XMLPropertyListScalars.h"
#include "tavlen/foundation/plist/detail/XMLText.h"
#include "tavlen/foundation/text/Base64.h"

namespace tavlen {

namespace {

constexpr std::string_view kUIDKey = "CF$UID";

bool isBlank(std::string_view text) {
  return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

std::string_view view(const xmlChar* text) {
  return text == nullptr ? std::string_view() : reinterpret_cast<const char*>(text);
}

/// Handles the events of the XML library, which checks the syntax.
class Reader {
 public:
  explicit Reader(std::string_view bytes) : source_(bytes) {
    // The library requires a single thread to make its first call.
    static const bool isReady = (xmlInitParser(), true);
    static_cast<void>(isReady);
    const std::string_view text = source_.view();
    if (text.size() > std::size_t{std::numeric_limits<int>::max()}) {
      throw invalidPropertyList("It is too large.");
    }
    prescanXML(text);
    xml_.reset(xmlReaderForMemory(text.data(), static_cast<int>(text.size()), nullptr,
                                  source_.isUTF8() ? "UTF-8" : nullptr,
                                  XML_PARSE_NONET | (source_.isUTF8() ? XML_PARSE_IGNORE_ENC : 0)));
    if (xml_ == nullptr) throw std::bad_alloc();
    xmlTextReaderSetStructuredErrorHandler(xml_.get(), keepError, this);
  }

  PropertyList read() {
    int result = 0;
    while ((result = xmlTextReaderRead(xml_.get())) == 1) handleNode();
    if (result != 0) throw invalidPropertyList(error_.empty() ? "It is malformed." : error_);
    if (!hasRoot_) throw invalidPropertyList("It has no value.");
    return builder_.take();
  }

 private:
  static void keepError(void* self, xmlErrorPtr error) {
    std::string& kept = static_cast<Reader*>(self)->error_;
    if (!kept.empty() || error == nullptr || error->level < XML_ERR_ERROR) return;
    kept = "Line " + std::to_string(error->line) + ": ";
    kept += error->message == nullptr ? "malformed" : error->message;
    while (kept.ends_with('\n')) kept.pop_back();
  }

  [[noreturn]] void fail(std::string_view reason) const {
    throw invalidPropertyList("Line " +
                              std::to_string(xmlTextReaderGetParserLineNumber(xml_.get())) + ": " +
                              std::string(reason));
  }

  void handleNode() {
    switch (xmlTextReaderNodeType(xml_.get())) {
      case XML_READER_TYPE_ELEMENT: {
        const std::string name(view(xmlTextReaderConstName(xml_.get())));
        const bool isEmpty = xmlTextReaderIsEmptyElement(xml_.get()) == 1;
        begin(name);
        if (isEmpty) end();
        break;
      }
      case XML_READER_TYPE_END_ELEMENT:
        end();
        break;
      case XML_READER_TYPE_TEXT:
      case XML_READER_TYPE_CDATA:
      case XML_READER_TYPE_WHITESPACE:
      case XML_READER_TYPE_SIGNIFICANT_WHITESPACE:
        addText(view(xmlTextReaderConstValue(xml_.get())));
        break;
      case XML_READER_TYPE_ENTITY_REFERENCE:
        fail("entities are not supported");
      default:
        break;  // comments, instructions, the document type
    }
  }

  void begin(const std::string& name) {
    if (!scalar_.empty()) fail("an element inside <" + scalar_ + ">");
    if (!isInside_) {
      if (name != "plist") fail("the root is not <plist>");
      isInside_ = true;
    } else if (name == "dict") {
      checkPlace();
      builder_.beginDictionary();
    } else if (name == "array") {
      checkPlace();
      builder_.beginArray();
    } else {
      scalar_ = name;
    }
  }

  void end() {
    if (!scalar_.empty()) {
      endScalar();
      scalar_.clear();
      text_.clear();
    } else if (builder_.depth() > 0) {
      endContainer();
    }
  }

  void addText(std::string_view text) {
    if (!scalar_.empty()) {
      text_ += text;
    } else if (!isBlank(text)) {
      fail("text outside of a value");
    }
  }

  void endScalar() {
    if (scalar_ == "key") return endKey();
    if (scalar_ == "string") return addValue(text_);
    if (scalar_ == "true" || scalar_ == "false") {
      if (!isBlank(text_)) fail("text inside <" + scalar_ + "/>");
      return addValue(scalar_ == "true");
    }
    if (scalar_ == "data") return endData();
    std::optional<PropertyList::Node> value;
    if (scalar_ == "integer") {
      if (const auto integer = integerFromXML(text_)) {
        value = std::visit([](auto number) -> PropertyList::Node { return number; }, *integer);
      }
    } else if (scalar_ == "real") {
      value = realFromXML(text_);
    } else if (scalar_ == "date") {
      value = dateFromXML(text_);
    } else {
      fail("unknown element <" + scalar_ + ">");
    }
    if (!value) fail("malformed <" + scalar_ + ">");
    addValue(*value);
  }

  void endData() {
    const auto bytes = bytesFromBase64(text_, Base64Blanks::skipped);
    if (!bytes) fail("malformed <data>");
    addValue(PropertyList::Data{*bytes});
  }

  void endKey() {
    if (!builder_.isInDictionary() || builder_.hasKey()) fail("an unexpected key");
    builder_.key(text_);
  }

  /// Fails unless a value is allowed at this place.
  void checkPlace() {
    if (builder_.depth() == 0) {
      if (hasRoot_) fail("a second value");
      hasRoot_ = true;
    } else if (builder_.isInDictionary() && !builder_.hasKey()) {
      fail("a value without a key");
    }
  }

  void addValue(const PropertyList::Node& value) {
    checkPlace();
    builder_.add(value);
  }

  void endContainer() {
    if (builder_.hasKey()) fail("a key without a value");
    if (const auto uid = uidOfDictionary()) return builder_.endAs(*uid);
    builder_.end();
  }

  /// The UID if the open dictionary is the form of one ({"CF$UID": integer}).
  std::optional<PropertyList::UID> uidOfDictionary() const {
    if (!builder_.isInDictionary() || builder_.members().size() != 1) return std::nullopt;
    const PropertyList& list = builder_.list();
    const PropertyList::Member member = builder_.members().front();
    if (list.string(member.key) != kUIDKey) return std::nullopt;
    if (const auto value = list.get<std::uint64_t>(member.value)) return PropertyList::UID{*value};
    const auto value = list.integer(member.value);
    if (!value || *value < 0) return std::nullopt;
    return PropertyList::UID{static_cast<std::uint64_t>(*value)};
  }

  struct Free {
    void operator()(xmlTextReader* reader) const { xmlFreeTextReader(reader); }
  };

  XMLText source_;  // the XML library reads it in place
  std::unique_ptr<xmlTextReader, Free> xml_;
  std::string error_;
  bool isInside_ = false;  ///< whether the reader is inside the root element
  bool hasRoot_ = false;
  std::string scalar_;  ///< the name of the element whose text is being collected; empty for none
  std::string text_;
  PropertyListBuilder builder_;
};

}  // namespace

PropertyList readXMLPropertyList(std::string_view bytes) { return Reader(bytes).read(); }

}  // namespace tavlen
