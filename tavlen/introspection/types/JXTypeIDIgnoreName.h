#pragma once

#include <mutex>
#include <string_view>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// A recursive mutex with a descriptive text.
class TAVLEN_API JXTypeLock : public std::recursive_mutex {
 public:
  /// `string` must outlive the lock.
  explicit JXTypeLock(std::string_view string) : string_(string) {}
  /// The text.
  std::string_view string() const { return string_; }

 private:
  std::string_view string_;
};

/// Whether objects are parsed without the quoted name that may follow the `@`. A flag of the whole
/// process: read and set it only while holding JXTypeIDIgnoreNameLock.
///
/// Parsing a struct or union with named members may set it, and then leaves it false, whatever its
/// former value. See JXTypeMembers.
extern bool JXTypeIDIgnoreName;
/// Guards JXTypeIDIgnoreName.
extern JXTypeLock JXTypeIDIgnoreNameLock;

}  // namespace tavlen
