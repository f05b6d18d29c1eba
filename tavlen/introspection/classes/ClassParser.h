#pragma once

#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/tasks/Progress.h"
#include "tavlen/introspection/classes/ObjCClass.h"

namespace tavlen {

class Executable;

/// A source of the Objective-C classes of an image.
///
/// Parsing blocks. Of a StaticClassParser it ends with ECANCELED when the given progress is
/// cancelled, of a RemoteClassParser by cancelTessaloopIfNeeded(); that of a DynamicClassParser
/// cannot be cancelled.
///
/// Threads: any; each parser documents which of its calls wait for one another.
class TAVLEN_API ClassParser {
 public:
  /// Classes; never null.
  using Classes = std::vector<std::shared_ptr<ObjCClass>>;

  /// A parser has no state that a caller sees.
  ClassParser() = default;
  ClassParser(const ClassParser&) = delete;
  ClassParser& operator=(const ClassParser&) = delete;
  virtual ~ClassParser() = default;

  /// The classes that the image of `executable` defines, in the parser's order; none is null.
  /// Throws the parser's own error.
  Classes parse(const Executable& executable) const { return parseBelow(nullptr, executable); }

  /// The same; reports its progress as one unit of `parent`.
  Classes parse(const Executable& executable, const std::shared_ptr<Progress>& parent) const {
    return parseBelow(parent, executable);
  }

  /// The first class named `name` of those that parse() returns; null without a match. A parser
  /// makes records of as few other classes as it can.
  std::shared_ptr<ObjCClass> parseClassNamed(std::string_view name, const Executable& executable,
                                             const std::shared_ptr<Progress>& parent) const {
    return parseNamedBelow(parent, executable, name);
  }

 private:
  /// Implements parse(). `parent` may be null.
  virtual Classes parseBelow(const std::shared_ptr<Progress>& parent,
                             const Executable& executable) const = 0;
  /// Implements parseClassNamed(). This implementation makes records of all classes.
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
