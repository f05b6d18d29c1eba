#include "tavlen/introspection/types/detail/JXTypeMembers.h"

#include <iterator>
#include <mutex>
#include <utility>

#include "tavlen/introspection/types/JXTypeCursor.h"
#include "tavlen/introspection/types/JXTypeIDIgnoreName.h"

namespace tavlen {

namespace {

/// RAII: holds the lock and sets the flag. Afterwards the flag is false, whatever it was before.
class IgnoringNames {
 public:
  IgnoringNames() : lock_(JXTypeIDIgnoreNameLock) { JXTypeIDIgnoreName = true; }
  IgnoringNames(const IgnoringNames&) = delete;
  IgnoringNames& operator=(const IgnoringNames&) = delete;
  ~IgnoringNames() { JXTypeIDIgnoreName = false; }

 private:
  std::lock_guard<JXTypeLock> lock_;
};

/// Whether a type that begins with `character` may be a container, which is worth caching.
bool mayHoldOthers(char character) {
  return JXTypeParse::holdsOthers(character) ||
         JXTypeQualifierForEncoding(character) != JXTypeQualifiers::none;
}

/// Moves the items from `begin` on out of `list`.
template <class Item>
std::unique_ptr<const std::vector<Item>> taken(std::vector<Item>& list, std::size_t begin) {
  const auto first = list.begin() + static_cast<std::ptrdiff_t>(begin);
  auto items = std::make_unique<std::vector<Item>>(std::make_move_iterator(first),
                                                   std::make_move_iterator(list.end()));
  list.erase(first, list.end());
  return items;
}

}  // namespace

JXTypeMembers::JXTypeMembers(JXTypeCursor& cursor)
    : cursor_(cursor),
      begin_(cursor.parse().members.size()),
      namesBegin_(cursor.parse().names.size()),
      isNamed_(cursor.isAt('"')) {}

void JXTypeMembers::read(char end) {
  if (isNamed_) {
    readNamed(end);
    return;
  }
  while (!cursor_.isAtEnd() && !cursor_.isAt(end)) {
    std::shared_ptr<JXType> member = JXTypeWithEncoding(cursor_);
    cursor_.parse().members.push_back(std::move(member));
  }
}

void JXTypeMembers::readNamed(char end) {
  JXTypeParse& parse = cursor_.parse();
  while (!cursor_.isAtEnd() && !cursor_.isAt(end)) {
    if (parse.members.size() > begin_ && !cursor_.isAt('"')) readAgain();
    parse.names.push_back(readName());
    member_ = cursor_.position();
    std::shared_ptr<JXType> member = readMember();
    parse.members.push_back(std::move(member));
  }
}

/// Parses the last member again, without a class name: the quoted text was the next member's name.
void JXTypeMembers::readAgain() {
  JXTypeParse& parse = cursor_.parse();
  ++parse.corrections;
  parse.members.pop_back();
  cursor_.moveTo(member_);
  const IgnoringNames ignoring;
  std::shared_ptr<JXType> member = readMember();
  parse.members.push_back(std::move(member));
}

/// Parses a quoted name. The first character is skipped, whatever it is.
std::string_view JXTypeMembers::readName() {
  const std::size_t opening = cursor_.position();
  cursor_.advance();
  const std::size_t begin = cursor_.position();
  cursor_.moveTo(cursor_.text().find('"', begin));
  const char* bytes = cursor_.text().data();
  const std::string_view name =
      JXType::stringBetweenStart(bytes + begin, bytes + cursor_.position());
  cursor_.advance();
  cursor_.parse().count(cursor_.position(), cursor_.position() - opening);
  return name;
}

std::shared_ptr<JXType> JXTypeMembers::readMember() {
  if (!mayHoldOthers(cursor_.character())) return JXTypeWithEncoding(cursor_);
  JXTypeParse& parse = cursor_.parse();
  std::unique_lock lock(JXTypeIDIgnoreNameLock);
  const std::uint64_t key = parse.key(cursor_.position(), JXTypeIDIgnoreName);
  if (const auto found = parse.readings.find(key); found != parse.readings.end()) {
    cursor_.moveTo(found->second.end);
    // Do as a new parse would, which corrects a member within this one and thereby clears the flag.
    if (found->second.hasCorrected) {
      JXTypeIDIgnoreName = false;
      ++parse.corrections;
    }
    return found->second.type;
  }
  lock.unlock();
  const std::uint64_t corrections = parse.corrections;
  std::shared_ptr<JXType> type = JXTypeWithEncoding(cursor_);
  parse.readings[key] = {type, cursor_.position(), parse.corrections != corrections};
  return type;
}

std::unique_ptr<const std::vector<std::shared_ptr<JXType>>> JXTypeMembers::types() {
  return taken(cursor_.parse().members, begin_);
}

std::unique_ptr<const std::vector<std::string_view>> JXTypeMembers::names() {
  return isNamed_ ? taken(cursor_.parse().names, namesBegin_) : nullptr;
}

}  // namespace tavlen
