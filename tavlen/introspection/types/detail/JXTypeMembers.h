#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "tavlen/introspection/types/JXType.h"

namespace tavlen {

/// Reads the members of one struct or union, from behind its `=` up to its end delimiter. For
/// JXTypeComplex.
///
/// While it reads, the members lie in the cursor's lists, behind those of the aggregates around.
class JXTypeMembers {
 public:
  explicit JXTypeMembers(JXTypeCursor& cursor);

  /// Reads up to `end`, which is not passed, or to the end of the text.
  void read(char end);

  /// What was read, in lists of just the length that is needed; to be asked for once.
  std::unique_ptr<const std::vector<std::shared_ptr<JXType>>> types();
  /// Null where the members have no names.
  std::unique_ptr<const std::vector<std::string_view>> names();

 private:
  void readNamed(char end);
  void readAgain();
  std::string_view readName();
  std::shared_ptr<JXType> readMember();

  JXTypeCursor& cursor_;
  std::size_t begin_;       ///< in the list of members
  std::size_t namesBegin_;  ///< in the list of names
  std::size_t member_ = 0;  ///< where the last member begins, behind its name
  bool isNamed_;
};

}  // namespace tavlen
