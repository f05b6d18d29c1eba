#pragma once

#include <cstddef>
#include <filesystem>
#include <string_view>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/introspection/classes/ClassParser.h"
#include "tavlen/introspection/classes/StaticClassParser.h"

namespace tavlen {

/// Objective-C headers of classes, as far as the records tell: superclass, protocols and methods.
class TAVLEN_API ClassHeaders {
 public:
  /// The file that all others import. It has the structs and unions, and declares superclasses and
  /// protocols from elsewhere. No class's header has that name.
  static constexpr std::string_view kCommonFile = "common-types.h";

  /// The number of files written, without the common one.
  struct Written {
    std::size_t classes = 0;     ///< one file for each class
    std::size_t categories = 0;  ///< one file for each category
  };

  /// Writes headers into `folder`, which is created unless it exists: `Name.h` for a class,
  /// `Name+Category.h` for a category of another image's class, and the common file. Other files
  /// of those names are replaced, links among them; nothing is written elsewhere.
  ///
  /// Every header compiles with clang, whatever the names and encodings. A name that is no
  /// identifier in C, or that something else has, is changed; an attribute or a comment at its
  /// declaration has the original. Names of files that are equal but for case are numbered. A
  /// method that cannot be declared, or whose encoding is malformed, becomes a comment. The same
  /// input gives the same bytes.
  ///
  /// Blocks, and cannot be cancelled. Time is linear in the input. Memory: the largest file, and
  /// the structs. Throws std::system_error with the path; files written before stay. Threads: any,
  /// but one folder one call at a time.
  static Written write(const ClassParser::Classes& classes,
                       const std::vector<StaticClassParser::Category>& categories,
                       const std::filesystem::path& folder);

 private:
  class Writer;
};

}  // namespace tavlen
