#pragma once

#include <objc/objc.h>

#include <mutex>
#include <string>
#include <unordered_map>

#include <JavaScriptCore/JavaScript.h>

#include "tools/loader/types/Ownership.h"

namespace tavlen::loader {

class Engine;

/// The wrappers of the program's objects, one for each object as long as a script can reach it, so
/// that === works. Threads: any, also concurrently.
class IdentityTable {
 public:
  /// `find`, `keep` and `forget` are functions of the engine: the public interface has weak
  /// references only in scripts.
  struct Functions {
    JSObjectRef find;
    JSObjectRef keep;
    JSObjectRef forget;
  };

  explicit IdentityTable(Engine& engine) : engine_(engine) {}
  IdentityTable(const IdentityTable&) = delete;
  IdentityTable& operator=(const IdentityTable&) = delete;
  ~IdentityTable() = default;

  /// Sets the functions, which must be protected. Once, before any other call.
  void use(const Functions& functions) { functions_ = functions; }

  /// The wrapper of an object or a class; null, the value, for nil. Keep the result on the stack.
  JSValueRef wrapped(id object, Ownership ownership);
  /// The value of a selector; null for a null one.
  JSValueRef selector(SEL selector);
  /// The value of an address; null for a null one. Each call makes another one.
  JSValueRef pointer(void* address);

  /// The wrapper of an object that must not be retained (RAII): one being deallocated. It is dead
  /// afterwards.
  class Lent {
   public:
    Lent(IdentityTable& table, id object);
    Lent(const Lent&) = delete;
    Lent& operator=(const Lent&) = delete;
    ~Lent();

    JSObjectRef wrapper() const { return wrapper_; }

   private:
    IdentityTable& table_;
    id object_;
    JSObjectRef wrapper_;
    bool isOwn_ = false;  ///< false where the object had a wrapper already
  };

  /// Whether a script can reach a wrapper of the object.
  bool isWrapped(id object) { return found(object) != nullptr; }
  /// Hands the reference of the wrapper `value` over to the caller. The wrapper is dead afterwards.
  void giveUp(JSValueRef value);

  /// Drops the entry of `object` unless its wrapper lives.
  void forget(id object);

 private:
  JSObjectRef found(id object);
  JSObjectRef make(id object, bool isOwned);
  void end(JSObjectRef wrapper, id object);
  JSObjectRef classWrapper(Class cls);

  Engine& engine_;
  Functions functions_{};
  std::mutex lock_;                                 ///< held while a wrapper is made
  std::unordered_map<Class, JSObjectRef> classes_;  ///< protected for ever, like the classes
  std::unordered_map<std::string, JSObjectRef> selectors_;  ///< protected for ever
};

}  // namespace tavlen::loader
