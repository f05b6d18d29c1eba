#include "tavlen/foundation/archive/KeyedArchiver.h"

#include <algorithm>
#include <functional>
#include <span>

#include "tavlen/foundation/plist/BinaryPropertyListWriter.h"
#include "tavlen/foundation/text/Unicode.h"

namespace tavlen {

namespace {

/// The stored form of nil. The text "$null" itself is therefore written as a mutable string object.
constexpr std::string_view kNullText = "$null";

}  // namespace

/// RAII nesting counter.
class KeyedArchiver::Nesting {
 public:
  explicit Nesting(KeyedArchiver& archiver) : archiver_(archiver) {
    if (archiver_.depth_ == kDeepest) {
      throw EncodingError::invalidValue("nested deeper than " + std::to_string(kDeepest) +
                                        " objects");
    }
    ++archiver_.depth_;
  }
  ~Nesting() { --archiver_.depth_; }
  Nesting(const Nesting&) = delete;
  Nesting& operator=(const Nesting&) = delete;

 private:
  KeyedArchiver& archiver_;
};

KeyedArchiver::KeyedArchiver() { null_ = add(list_.add(kNullText)); }

std::size_t KeyedArchiver::reserve() {
  const std::size_t number = objects_.size();
  objects_.push_back(0);
  references_.push_back(list_.add(PropertyList::UID{number}));
  return number;
}

KeyedArchiver::Index KeyedArchiver::add(Index object) {
  const std::size_t number = reserve();
  objects_[number] = object;
  return references_[number];
}

KeyedArchiver::Index KeyedArchiver::key(std::string_view text) {
  // There are few keys, so a linear search is faster than hashing.
  const auto known = std::find_if(keys_.begin(), keys_.end(),
                                  [&](const auto& entry) { return entry.first == text; });
  if (known != keys_.end()) return known->second;
  keys_.emplace_back(text, list_.add(text));
  return keys_.back().second;
}

void KeyedArchiver::member(std::string_view key, Index value) {
  members_.push_back({this->key(key), value});
}

KeyedArchiver::Index KeyedArchiver::takeMembers(std::size_t firstMember) {
  const auto members = std::span(members_).subspan(firstMember);
  const Index dictionary = list_.add(PropertyList::Dictionary{members});
  members_.resize(firstMember);
  return dictionary;
}

KeyedArchiver::Index KeyedArchiver::strings(std::initializer_list<std::string_view> texts) {
  std::vector<Index> elements;
  for (const std::string_view text : texts) elements.push_back(key(text));
  return list_.add(PropertyList::Array{elements});
}

KeyedArchiver::Index KeyedArchiver::classNamed(std::string_view name) {
  const auto known = std::find_if(classes_.begin(), classes_.end(),
                                  [&](const auto& entry) { return entry.first == name; });
  if (known != classes_.end()) return known->second;
  const std::size_t first = members_.size();
  member("$classname", key(name));
  member("$classes", name == "NSMutableString" ? strings({name, "NSString", "NSObject"})
                                               : strings({name, "NSObject"}));
  classes_.emplace_back(name, add(takeMembers(first)));
  return classes_.back().second;
}

KeyedArchiver::Index KeyedArchiver::object(std::string_view className, FunctionRef<void()> members,
                                           const void* identity) {
  if (identity != nullptr) {
    const auto known = identities_.find(identity);
    if (known != identities_.end()) return known->second;
  }
  const Nesting nesting(*this);
  const std::size_t number = reserve();
  if (identity != nullptr) identities_.emplace(identity, references_[number]);
  const std::size_t first = members_.size();
  members();
  // The class comes last: the format numbers it after everything that its first object contains.
  member("$class", classNamed(className));
  objects_[number] = takeMembers(first);
  return references_[number];
}

KeyedArchiver::Index KeyedArchiver::boolean(bool value) {
  std::optional<Index>& known = booleans_[value ? 1 : 0];
  if (!known) known = list_.add(value);
  return *known;
}

KeyedArchiver::Index KeyedArchiver::text(std::string_view text) {
  if (text == kNullText) return textOfNull();
  const std::size_t hash = std::hash<std::string_view>()(text);
  const Index known = texts_.find(hash, [&](Index place) { return list_.string(place) == text; });
  if (known != HashIndex::kNone) return known + 1;
  if (!isValidUTF8(text)) throw EncodingError::invalidValue("the string is not valid UTF-8");
  const Index place = list_.add(text);
  texts_.add(hash, place);
  return add(place);  // its reference follows the text in the list
}

KeyedArchiver::Index KeyedArchiver::textOfNull() {
  if (!nullText_) {
    nullText_ = object("NSMutableString", [&] { member("NS.string", list_.add(kNullText)); });
  }
  return *nullText_;
}

KeyedArchiver::Index KeyedArchiver::url(std::string_view absoluteString) {
  return object("NSURL", [&] {
    member("NS.base", null());
    member("NS.relative", text(absoluteString));
  });
}

KeyedArchiver::Index KeyedArchiver::array(std::size_t count,
                                          FunctionRef<Index(std::size_t i)> element) {
  return object("NSArray", [&] {
    std::vector<Index> elements;
    elements.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
      elements.push_back(element(i));
      // A reader would refuse it.
      if (elements.back() == null_)
        throw EncodingError::invalidValue("an array cannot contain nil");
    }
    member("NS.objects", list_.add(PropertyList::Array{elements}));
  });
}

std::string KeyedArchiver::finish(Index root) {
  member("root", root);
  const Index top = takeMembers(0);
  member("$version", list_.add(std::int64_t{100000}));
  member("$archiver", key("NSKeyedArchiver"));
  member("$top", top);
  member("$objects", list_.add(PropertyList::Array{objects_}));
  list_.setRoot(takeMembers(0));
  return writeBinaryPropertyList(list_);
}

}  // namespace tavlen
