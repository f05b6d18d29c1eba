#include "tavlen/foundation/plist/PropertyListBuilder.h"

namespace tavlen {

void PropertyListBuilder::place(Index index) {
  list_.setRoot(index);
  if (open_.empty()) return;
  Frame& frame = open_.back();
  members_.push_back({frame.key.value_or(0), index});
  frame.key.reset();
}

std::span<const PropertyList::Member> PropertyListBuilder::members() const {
  return std::span(members_).subspan(open_.back().firstMember);
}

void PropertyListBuilder::end() {
  if (isInDictionary()) return endAs(PropertyList::Dictionary{members()});
  elements_.clear();
  for (const PropertyList::Member& member : members()) elements_.push_back(member.value);
  endAs(PropertyList::Array{elements_});
}

void PropertyListBuilder::endAs(const PropertyList::Node& node) {
  const Index index = list_.add(node);
  members_.resize(open_.back().firstMember);
  open_.pop_back();
  place(index);
}

}  // namespace tavlen
