#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "tavlen/introspection/types/JXType.h"

namespace tavlen {

/// Parses the members of a struct or union, from after its `=` up to its end delimiter. For
/// JXTypeComplex.
///
/// Members may have quoted names, and that makes objects ambiguous. In `{S="a"@"b"i}` the text
/// `"b"` could be the class of the object `a`, as in `{S="a"@"NSString"}`, or the name of the next
/// member. The parser first takes it for the class. If the next character is then neither a quote
/// nor the end delimiter, as with the `i` here, that was wrong: it retracts the member and parses
/// it again with JXTypeIDIgnoreName set, so that `"b"` becomes the name of the `i`. JXTypeParse
/// limits the cost of that. If a class name contains the end delimiter of an aggregate around it,
/// the second reading may end at that delimiter, before the character that caused it.
///
/// Until types() and names() are called, the members are in the cursor's lists, after those of the
/// enclosing aggregates.
class JXTypeMembers {
 public:
  explicit JXTypeMembers(JXTypeCursor& cursor);

  /// Parses up to `end`, which is not passed, or to the end of the text.
  void read(char end);

  /// Moves the members out of the cursor's list, without spare capacity. Call once.
  std::unique_ptr<const std::vector<std::shared_ptr<JXType>>> types();
  /// The same for their names; null when the members have none.
  std::unique_ptr<const std::vector<std::string_view>> names();

 private:
  void readNamed(char end);
  void readAgain();
  std::string_view readName();
  std::shared_ptr<JXType> readMember();

  JXTypeCursor& cursor_;
  std::size_t begin_;       ///< offset in the list of members
  std::size_t namesBegin_;  ///< offset in the list of names
  std::size_t member_ = 0;  ///< position of the last member, after its name
  bool isNamed_;
};

}  // namespace tavlen
