#pragma once

#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "tavlen/foundation/tasks/Progress.h"
#include "tavlen/introspection/classes/ObjCClass.h"

namespace tavlen {

class Executable;

/// A way to learn the Objective-C classes of an image.
///
/// Threads: any; a parser says where calls wait for one another.
class ClassParser {
 public:
  using Classes = std::vector<std::shared_ptr<ObjCClass>>;

  ClassParser() = default;
  ClassParser(const ClassParser&) = delete;
  ClassParser& operator=(const ClassParser&) = delete;
  virtual ~ClassParser() = default;

  /// The classes that the image of `executable` defines, in the order in which the parser finds
  /// them; never null. Blocks. Throws the parser's own error.
  Classes parse(const Executable& executable) const { return parseBelow(nullptr, executable); }

  /// The same; how far it is shows as one unit of `parent`.
  Classes parse(const Executable& executable, const std::shared_ptr<Progress>& parent) const {
    return parseBelow(parent, executable);
  }

  /// Of parse(), the first class of that name; null where there is none. A parser makes records of
  /// no more classes than it has to.
  std::shared_ptr<ObjCClass> parseClassNamed(std::string_view name, const Executable& executable,
                                             const std::shared_ptr<Progress>& parent) const {
    return parseNamedBelow(parent, executable, name);
  }

 private:
  /// `parent` may be null.
  virtual Classes parseBelow(const std::shared_ptr<Progress>& parent,
                             const Executable& executable) const = 0;
  /// The same; this one makes records of all.
  virtual std::shared_ptr<ObjCClass> parseNamedBelow(const std::shared_ptr<Progress>& parent,
                                                     const Executable& executable,
                                                     std::string_view name) const {
    for (std::shared_ptr<ObjCClass>& cls : parseBelow(parent, executable)) {
      if (cls->name == name) return std::move(cls);
    }
    return nullptr;
  }
};

}  // namespace tavlen
