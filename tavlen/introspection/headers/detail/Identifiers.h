#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <unordered_map>

/// Names in C and Objective-C made of any text. Threads: any; one object one thread at a time.
namespace tavlen {

/// Whether `name` can be declared in C and Objective-C: ASCII, no reserved word, and no macro that
/// compilers predefine.
bool isDeclarableName(std::string_view name);

/// `name` itself if it can be declared, or else a similar name that can.
std::string declarableName(std::string_view name);

/// Whether a method can be declared with this selector. Its parts may be reserved words or empty.
bool isDeclarableSelector(std::string_view selector);

/// Makes names unique by appending numbers, from 2 on.
class UniqueNames {
 public:
  /// `separator` stands before the number.
  explicit UniqueNames(char separator) : separator_(separator) {}

  /// A name that was not returned before: `name` itself if possible.
  std::string add(std::string_view name);
  /// The same, where names equal but for case count as equal.
  std::string addIgnoringCase(std::string_view name);

 private:
  std::string add(std::string_view name, const std::string& key);

  char separator_;
  /// For each name taken, the number to try next.
  std::unordered_map<std::string, unsigned> nextNumbers_;
};

/// The identifiers of names that share a scope.
class IdentifierTable {
 public:
  /// A table in which no name has one of the identifiers `taken`.
  IdentifierTable(std::initializer_list<std::string_view> taken);

  /// The identifier of `name`: always the same, and no other name's. `name` itself where it can be
  /// declared and no earlier name has taken it. Valid as long as the table.
  const std::string& of(std::string_view name);
  /// An identifier of its own for one of several things called `name`. The first is what of()
  /// returns.
  std::string add(std::string_view name);
  /// An identifier that no name has or will have: `identifier` itself if possible.
  std::string reserve(std::string_view identifier) { return taken_.add(identifier); }

 private:
  UniqueNames taken_{'_'};
  std::unordered_map<std::string, std::string> identifiers_;
};

}  // namespace tavlen
