#pragma once

#include <objc/runtime.h>

#include <atomic>
#include <memory>
#include <optional>
#include <string>

#include <JavaScriptCore/JavaScript.h>

#include "tavlen/foundation/text/TextLines.h"
#include "tools/loader/base/ExceptionGuard.h"
#include "tools/loader/engine/HookStack.h"
#include "tools/loader/engine/IdentityTable.h"
#include "tools/loader/engine/WatchedCode.h"
#include "tools/loader/types/MethodFamily.h"
#include "tools/loader/values/ArgumentFrame.h"

namespace tavlen::loader {

class Engine;

/// A method that a function of a script replaces. Lives as long as the process: the method's code
/// leads to it.
///
/// Threads: any, also concurrently; the engine lets one script run at a time.
class Hook {
 public:
  /// The method and what replaces it.
  struct Target {
    Class cls;  ///< whose instances have the method: of a class method, the metaclass
    SEL selector;
    std::string text;  ///< "-[Class selector]"
    bool isClassMethod;
    std::string encoding;               ///< as the tweak declares the method's types
    JSObjectRef function;               ///< protected
    std::optional<TextPosition> place;  ///< in the source
  };

  /// Replaces the method and returns the hook. Throws UnsupportedType if its types cannot be passed
  /// or differ from the declared ones, and std::runtime_error if there is no such method or no
  /// memory for its code.
  static Hook& install(Engine& engine, Target target);

  Hook(const Hook&) = delete;
  Hook& operator=(const Hook&) = delete;

  Engine& engine() const { return engine_; }
  const CallSignature& signature() const { return *signature_; }
  /// That of calls of the original; see CallSignature::ended().
  const CallSignature& originalSignature() const { return *ended_; }
  const MethodFamily& family() const { return family_; }
  JSObjectRef function() const { return target_.function; }
  const std::string& text() const { return target_.text; }

  /// If a category that has been loaded since has taken the method's place, hooks its method, which
  /// becomes the original. Other code that the program gives to the method stays.
  void followCategories();

  /// Calls the replaced method for %orig and keeps its answer in the record. Throws
  /// ProgramException.
  JSValueRef callOriginal(HookRecord& record, ArgumentFrame& frame);

 private:
  Hook(Engine& engine, Target target, std::shared_ptr<const CallSignature> signature, Class pools);

  static void enter(ffi_cif* cif, void* result, void** arguments, void* hook);
  void replace(IMP code);
  void replace(Method method);
  void (*original() const)();

  /// Apart from enter(), whose frame stays small where the original is called at once.
  [[gnu::noinline]] void run(HookStack& stack, void* result, void** arguments);
  std::optional<Raised> runScript(HookStack& stack, HookRecord& record, void* result);
  std::optional<Raised> finish(HookRecord& record, JSValueRef value, JSValueRef thrown,
                               void* result);
  void readCall(HookStack& stack, HookRecord& record, std::optional<IdentityTable::Lent>& lent);
  bool takeAnswer(HookRecord& record, JSValueRef value, void* result);
  void reportMistake(const std::string& message) const;
  void fallBack(HookRecord& record, void* result);
  void returnAnswer(HookRecord& record, void* result) const;
  void prepareReceiver(HookRecord& record) const;
  void callReplaced(void** arguments, void* result) const;
  [[gnu::noinline]] void callEnded(void** arguments, void* result) const;

  Engine& engine_;
  const Target target_;
  const WatchedCode watched_;
  const std::shared_ptr<const CallSignature> signature_;
  const std::shared_ptr<const CallSignature> ended_;
  const MethodFamily family_;
  const Class pools_;   ///< the class of autorelease pools if they inherit the method, else null
  IMP code_ = nullptr;  ///< the hook's own
  std::atomic<Method> method_ = nullptr;
  /// Null for a method that was inherited: the superclass's is called then.
  std::atomic<void (*)()> replaced_ = nullptr;
};

}  // namespace tavlen::loader
