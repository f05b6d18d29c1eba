#include "tools/loader/engine/MethodTable.h"

#include <objc/runtime.h>

#include <mutex>
#include <string>

#include "tavlen/foundation/objc/MethodSignature.h"
#include "tools/loader/base/Messages.h"
#include "tools/loader/engine/Native.h"
#include "tools/loader/engine/ProgramCode.h"

namespace tavlen::loader {

namespace {

/// The types of a message that `receiver` forwards; empty if it does not.
std::string forwardedTypes(id receiver, SEL selector) {
  static const SEL kSignature = ObjCRuntime::selectorNamed("methodSignatureForSelector:");
  if (class_respondsToSelector(object_getClass(receiver), kSignature) == NO) return {};
  id platform = nullptr;
  runProgram([&] { platform = message(receiver, kSignature, selector); });
  const auto signature = MethodSignature::initWithSignature(platform);
  if (signature == nullptr) return {};
  std::string types = signature->methodReturnType();
  for (std::size_t i = 0; i < signature->numberOfArguments(); ++i)
    types += signature->getArgumentTypeAtIndex(i);
  return types;
}

/// A pool counts no references. One that ends when the collector frees its wrapper ends others.
bool isPool(id receiver) {
  Class cls = isClass(receiver) ? reinterpret_cast<Class>(receiver) : object_getClass(receiver);
  return isSubclass(cls, ObjCRuntime::classNamed("NSAutoreleasePool"));
}

CallableMethod describe(id receiver, SEL selector, const std::string& types) {
  const std::string name = methodText(object_getClass(receiver), selector, isClass(receiver));
  if (isPool(receiver)) throw ScriptError(name + ": scripts make no autorelease pools");
  if (types.empty()) throw ScriptError(name + ": there is no such method");
  try {
    const auto signature = CallSignature::from(types);
    if (signature->arguments().size() < 2)
      throw UnsupportedType("its types " + types + " are not a method's");
    const auto family = MethodFamily::of(sel_getName(selector), isClass(receiver), *signature);
    return {signature, CallSignature::ended(signature), family};
  } catch (const UnsupportedType& error) {
    throw ScriptError(name + ": " + error.what());
  }
}

}  // namespace

const CallableMethod& MethodTable::forwarded(id receiver, SEL selector) {
  const std::string types = forwardedTypes(receiver, selector);
  const std::lock_guard lock(lock_);
  const auto key = std::tuple(isClass(receiver), selector, types);
  if (const auto known = forwarded_.find(key); known != forwarded_.end()) return *known->second;
  auto method = std::make_unique<const CallableMethod>(describe(receiver, selector, types));
  return *forwarded_.try_emplace(key, std::move(method)).first->second;
}

const CallableMethod& MethodTable::find(id receiver, SEL selector) {
  const Key key = {object_getClass(receiver), selector};
  {
    const std::shared_lock lock(lock_);
    if (const auto found = methods_.find(key); found != methods_.end()) return *found->second;
  }
  Method own = class_getInstanceMethod(key.cls, selector);
  const char* types = own != nullptr ? method_getTypeEncoding(own) : nullptr;
  if (types == nullptr) return forwarded(receiver, selector);
  auto method = std::make_unique<const CallableMethod>(describe(receiver, selector, types));
  const std::lock_guard lock(lock_);
  return *methods_.try_emplace(key, std::move(method)).first->second;
}

}  // namespace tavlen::loader
