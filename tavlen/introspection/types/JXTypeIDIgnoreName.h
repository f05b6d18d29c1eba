#pragma once

#include <mutex>
#include <string_view>

namespace tavlen {

/// A recursive mutex that holds a text.
class JXTypeLock : public std::recursive_mutex {
 public:
  explicit JXTypeLock(std::string_view string) : string_(string) {}
  std::string_view string() const { return string_; }

 private:
  std::string_view string_;
};

/// Whether objects are read without the quoted name that may follow the `@`. One flag for the whole
/// process: read and set it only while holding the lock.
///
/// Reading a struct or union whose members are named may set it, and then leaves it false, whatever
/// it was before: an object member before another's quoted name looks as if that were its class,
/// and is read again.
extern bool JXTypeIDIgnoreName;
extern JXTypeLock JXTypeIDIgnoreNameLock;

}  // namespace tavlen
