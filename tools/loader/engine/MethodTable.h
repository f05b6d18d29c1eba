#pragma once

#include <objc/objc.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <shared_mutex>
#include <unordered_map>

#include "tools/loader/types/CallSignature.h"
#include "tools/loader/types/MethodFamily.h"

namespace tavlen::loader {

/// What is known of a method that scripts call.
struct CallableMethod {
  std::shared_ptr<const CallSignature> signature;
  std::shared_ptr<const CallSignature> ended;  ///< see CallSignature::ended()
  MethodFamily family;
};

/// The methods that messages of scripts have met. Threads: any, also concurrently.
class MethodTable {
 public:
  MethodTable() = default;
  MethodTable(const MethodTable&) = delete;
  MethodTable& operator=(const MethodTable&) = delete;
  ~MethodTable() = default;

  /// The method that a message `selector` to `receiver`, which is not nil, calls or is forwarded
  /// as. Valid for ever. Throws ScriptError without such a method, or if its types cannot be
  /// passed, and ProgramException: it may ask the receiver for a forwarded message's types.
  const CallableMethod& find(id receiver, SEL selector);

 private:
  struct Key {
    Class cls;
    SEL selector;

    bool operator==(const Key&) const = default;
  };
  struct Hash {
    std::size_t operator()(const Key& key) const {
      return std::hash<const void*>()(key.cls) * 31 + std::hash<const void*>()(key.selector);
    }
  };

  std::shared_mutex lock_;
  std::unordered_map<Key, std::unique_ptr<const CallableMethod>, Hash> methods_;
};

}  // namespace tavlen::loader
