#pragma once

#include <JavaScriptCore/JavaScript.h>

#include <cstdint>
#include <mutex>
#include <unordered_map>

#include "tools/loader/types/ValueType.h"

namespace tavlen::loader {

/// Makes the objects of structures by functions of the engine, one for each type: that takes a
/// third of the time of setting their properties one by one. Threads: any, also concurrently.
class StructureMakers {
 public:
  /// Types with more scalars are made in another way.
  static constexpr std::size_t kMostScalars = 64;

  StructureMakers() = default;
  StructureMakers(const StructureMakers&) = delete;
  StructureMakers& operator=(const StructureMakers&) = delete;
  ~StructureMakers() = default;

  /// A function that takes the values of the type's scalars, in the order of memory, and returns
  /// the object. Protected for ever. Null for a type that has too many.
  JSObjectRef makerFor(JSContextRef context, const ValueType& type);

 private:
  std::mutex lock_;
  std::unordered_map<std::uint64_t, JSObjectRef> makers_;  ///< by the types' numbers
};

/// The number of scalars in a type: those of its members, or 1.
std::size_t scalarCount(const ValueType& type);

}  // namespace tavlen::loader
