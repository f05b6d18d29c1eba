#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

struct objc_object;

namespace tavlen {

/// The types of a method, as the platform's NSMethodSignature answers for them: the receiver and
/// the selector count as arguments.
///
/// Immutable, so threads may share one.
class MethodSignature {
 public:
  /// The signature of an encoding such as "v24@0:8@16": the platform's own object where there is
  /// Apple's run time, the library's reading elsewhere. Null for an encoding that has none.
  static std::shared_ptr<const MethodSignature> signatureWithObjCTypes(std::string_view encoding);
  /// Wraps the platform's object `signature`, which is retained. Null for nil.
  static std::shared_ptr<const MethodSignature> initWithSignature(objc_object* signature);

  MethodSignature() = default;
  MethodSignature(const MethodSignature&) = delete;
  MethodSignature& operator=(const MethodSignature&) = delete;
  virtual ~MethodSignature() = default;

  virtual std::size_t numberOfArguments() const = 0;
  /// In bytes; a hint, which no two platforms count alike.
  virtual std::size_t frameLength() const = 0;
  /// Whether the caller does not wait for the result.
  virtual bool isOneway() const = 0;
  /// The size of the result in bytes; 0 for void.
  virtual std::size_t methodReturnLength() const = 0;
  /// Types keep their qualifiers and have no offset. Throws std::out_of_range for an index past the
  /// last argument.
  virtual std::string getArgumentTypeAtIndex(std::size_t index) const = 0;
  virtual std::string methodReturnType() const = 0;
  /// The object's own texts.
  virtual std::string description() const = 0;
  virtual std::string debugDescription() const = 0;
};

}  // namespace tavlen
