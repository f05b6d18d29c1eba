#pragma once

#include <objc/objc.h>

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <shared_mutex>
#include <string>
#include <tuple>
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
  /// passed, and ProgramException: it asks the receiver for a forwarded message's types, each time,
  /// because objects of one class may forward to different ones.
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

  const CallableMethod& forwarded(id receiver, SEL selector);

  std::shared_mutex lock_;
  std::unordered_map<Key, std::unique_ptr<const CallableMethod>, Hash> methods_;
  /// Those of forwarded messages: by whether the receiver is a class, the selector, the types.
  std::map<std::tuple<bool, SEL, std::string>, std::unique_ptr<const CallableMethod>> forwarded_;
};

}  // namespace tavlen::loader
