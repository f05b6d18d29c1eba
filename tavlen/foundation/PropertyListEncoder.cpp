#include "tavlen/foundation/PropertyListEncoder.h"

#include "tavlen/foundation/Unicode.h"

namespace tavlen {

namespace {

// The writers check this too, but they do not know the path.
std::string checkedText(std::string_view text) {
  if (!isValidUTF8(text)) throw EncodingError::invalidValue("the string is not valid UTF-8");
  return std::string(text);
}

}  // namespace

PropertyList PropertyListEncoder::finish() {
  if (list_.size() == 0 || (list_.get<PropertyList::Array>(list_.root()) == nullptr &&
                            list_.get<PropertyList::Dictionary>(list_.root()) == nullptr)) {
    throw EncodingError::invalidValue("a property list's root is an array or a dictionary");
  }
  return std::move(list_);
}

void PropertyListEncoder::begin(PropertyList::Node container) {
  if (open_.size() == kDeepest) {
    throw EncodingError::invalidValue("nested deeper than " + std::to_string(kDeepest) +
                                      " containers");
  }
  open_.push_back({std::move(container)});
}

void PropertyListEncoder::end() {
  PropertyList::Node container = std::move(open_.back().container);
  open_.pop_back();
  add(std::move(container));
}

void PropertyListEncoder::add(PropertyList::Node value) {
  const PropertyList::Index index = list_.add(std::move(value));
  // Containers are added when they end, so the root comes last.
  list_.setRoot(index);
  if (open_.empty()) return;
  Frame& frame = open_.back();
  if (auto* array = std::get_if<PropertyList::Array>(&frame.container)) {
    array->elements.push_back(index);
  } else {
    std::get<PropertyList::Dictionary>(frame.container).members.push_back({frame.key, index});
  }
}

void PropertyListEncoder::beginRecord() { begin(PropertyList::Dictionary()); }
void PropertyListEncoder::endRecord() { end(); }

void PropertyListEncoder::key(std::string_view key) {
  open_.back().key = list_.add(checkedText(key));
}

void PropertyListEncoder::beginArray(std::size_t count) {
  PropertyList::Array array;
  array.elements.reserve(count);
  begin(std::move(array));
}
void PropertyListEncoder::endArray() { end(); }

void PropertyListEncoder::null() { add(std::string("$null")); }
void PropertyListEncoder::boolean(bool value) { add(value); }
void PropertyListEncoder::integer(std::int64_t value) { add(value); }
void PropertyListEncoder::unsignedInteger(std::uint64_t value) { add(value); }
void PropertyListEncoder::real(double value) { add(value); }
void PropertyListEncoder::string(std::string_view value) { add(checkedText(value)); }
void PropertyListEncoder::date(Date value) { add(value); }

}  // namespace tavlen
