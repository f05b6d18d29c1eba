#include "tavlen/foundation/plist/detail/XMLPrescan.h"

#include <algorithm>
#include <string>

#include "tavlen/foundation/plist/PropertyList.h"

namespace tavlen {

namespace {

/// <plist> has a version; a tool might add a name space and a schema, but no more.
constexpr std::size_t kMostAttributes = 8;
constexpr std::size_t kLongestTag = 1024;
/// Maximum number of attributes and instructions in a document: the XML library keeps all names,
/// and its look-up slows down as they grow.
constexpr std::size_t kMostNames = 10'000;

class Scanner {
 public:
  explicit Scanner(std::string_view text) : text_(text) {}

  void scan() {
    skipText();
    while (!text_.empty()) {
      if (text_.starts_with("<!--")) {
        skipPast("<!--", "-->");
      } else if (text_.starts_with("<![CDATA[")) {
        skipPast("<![CDATA[", "]]>");
      } else if (text_.starts_with("<?")) {
        countName();
        skipPast("<?", "?>");
      } else if (text_.starts_with("<!DOCTYPE")) {
        skipDocumentType();
      } else if (text_.starts_with("<!")) {
        throw invalidPropertyList("It contains a declaration.");
      } else {
        takeTag();
      }
      skipText();
    }
  }

 private:
  void skipText() { text_.remove_prefix(std::min(text_.find('<'), text_.size())); }

  void skipPast(std::string_view start, std::string_view end) {
    const std::size_t found = text_.find(end, start.size());
    if (found == std::string_view::npos) {
      throw invalidPropertyList("\"" + std::string(start) + "\" is not closed.");
    }
    text_.remove_prefix(found + end.size());
  }

  void skipDocumentType() {
    if (takeTag().find('[') != std::string_view::npos) {
      throw invalidPropertyList("Its document type contains declarations.");
    }
  }

  void countName() {
    if (++names_ > kMostNames)
      throw invalidPropertyList("It has too many attributes or instructions.");
  }

  /// Takes the text up to the first '>' outside of quotes. A '<' before that is malformed and might
  /// be read differently by the XML library, so it is refused.
  std::string_view takeTag() {
    const std::string_view start = text_.substr(0, kLongestTag);
    std::size_t quoted = 0;
    for (std::size_t i = 1; i < start.size(); ++i) {
      if (start[i] == '>') {
        text_.remove_prefix(i + 1);
        return start.substr(0, i);
      }
      if (start[i] == '"' || start[i] == '\'') {
        if (++quoted > kMostAttributes) throw invalidPropertyList("A tag has too many attributes.");
        countName();
        i = start.find(start[i], i + 1);
        if (i == std::string_view::npos) break;
      } else if (start[i] == '<') {
        break;
      }
    }
    throw invalidPropertyList(start.size() == kLongestTag ? "A tag is too long."
                                                          : "A tag is not closed.");
  }

  std::string_view text_;
  std::size_t names_ = 0;
};

}  // namespace

void prescanXML(std::string_view text) { Scanner(text).scan(); }

}  // namespace tavlen
