#include "tavlen/foundation/plist/PropertyListEncoder.h"

#include "tavlen/foundation/text/Unicode.h"

namespace tavlen {

namespace {

// The writers check this as well, but they do not know the coding path.
std::string_view checkedText(std::string_view text) {
  if (!isValidUTF8(text)) throw EncodingError::invalidValue("the string is not valid UTF-8");
  return text;
}

}  // namespace

PropertyList PropertyListEncoder::finish() {
  using Kind = PropertyList::Kind;
  const PropertyList& list = builder_.list();
  if (list.size() == 0 ||
      (list.kind(list.root()) != Kind::array && list.kind(list.root()) != Kind::dictionary)) {
    throw EncodingError::invalidValue("a property list's root must be an array or a dictionary");
  }
  return builder_.take();
}

void PropertyListEncoder::checkDepth() const {
  if (builder_.depth() == kDeepest) {
    throw EncodingError::invalidValue("nested deeper than " + std::to_string(kDeepest) +
                                      " containers");
  }
}

void PropertyListEncoder::beginRecord() {
  checkDepth();
  builder_.beginDictionary();
}
void PropertyListEncoder::key(std::string_view key) { builder_.key(checkedText(key)); }
void PropertyListEncoder::endRecord() { builder_.end(); }

void PropertyListEncoder::beginArray(std::size_t /*count*/) {
  checkDepth();
  builder_.beginArray();
}
void PropertyListEncoder::endArray() { builder_.end(); }

void PropertyListEncoder::null() { builder_.add("$null"); }
void PropertyListEncoder::boolean(bool value) { builder_.add(value); }
void PropertyListEncoder::integer(std::int64_t value) { builder_.add(value); }
void PropertyListEncoder::unsignedInteger(std::uint64_t value) { builder_.add(value); }
void PropertyListEncoder::real(double value) { builder_.add(value); }
void PropertyListEncoder::string(std::string_view value) { builder_.add(checkedText(value)); }
void PropertyListEncoder::date(Date value) { builder_.add(value); }

}  // namespace tavlen
