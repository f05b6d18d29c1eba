#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "tavlen/foundation/base/API.h"

struct objc_object;

namespace tavlen {

/// The types of a method, as the platform's NSMethodSignature reports them. The receiver and the
/// selector count as arguments.
///
/// Immutable, so threads may share an object.
class TAVLEN_API MethodSignature {
 public:
  /// The signature of a method's type encoding such as "v24@0:8@16": the platform's own object
  /// under Apple's run time, our own reading of the encoding elsewhere. Null for an encoding that
  /// describes no method.
  static std::shared_ptr<const MethodSignature> signatureWithObjCTypes(std::string_view encoding);
  /// Wraps the platform's object `signature` and retains it. Null for nil.
  static std::shared_ptr<const MethodSignature> initWithSignature(objc_object* signature);

  MethodSignature() = default;
  MethodSignature(const MethodSignature&) = delete;
  MethodSignature& operator=(const MethodSignature&) = delete;
  virtual ~MethodSignature() = default;

  /// The number of arguments, including receiver and selector.
  virtual std::size_t numberOfArguments() const = 0;
  /// The size of the argument frame in bytes. Only a hint: platforms count differently.
  virtual std::size_t frameLength() const = 0;
  /// Whether the method is `oneway`: the caller does not wait for the result.
  virtual bool isOneway() const = 0;
  /// The size of the result in bytes; 0 for void.
  virtual std::size_t methodReturnLength() const = 0;
  /// The type of an argument, with its qualifiers and without its offset. Throws std::out_of_range
  /// for an index past the last argument.
  virtual std::string getArgumentTypeAtIndex(std::size_t index) const = 0;
  /// The type of the result, with its qualifiers and without its offset.
  virtual std::string methodReturnType() const = 0;
  /// A text for the reader.
  virtual std::string description() const = 0;
  /// A longer text for debugging.
  virtual std::string debugDescription() const = 0;
};

}  // namespace tavlen
