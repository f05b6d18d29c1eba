#include "tools/loader/hooks/Hook.h"

#include <objc/runtime.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>
#include <utility>

#include "tools/loader/base/Messages.h"
#include "tools/loader/engine/Engine.h"
#include "tools/loader/engine/ErrorValues.h"
#include "tools/loader/engine/Native.h"
#include "tools/loader/hooks/TracedCall.h"
#include "tools/loader/values/Values.h"

#ifdef __GNU_LIBOBJC__
/// A function of the run time, which has no public declaration of it: brings the tables of a class
/// and its subclasses up to date, if they exist. Takes the run time's lock.
extern "C" void tavlenUpdateTables(Class cls) __asm__("__objc_update_dispatch_table_for_class");
#endif

namespace tavlen::loader {

namespace {

constexpr std::size_t kHidden = 2;  // receiver and selector

id receiverOf(void** arguments) { return *static_cast<id*>(arguments[0]); }

/// The types of the method, with what the tweak knows better. Throws UnsupportedType.
std::shared_ptr<const CallSignature> signatureFor(const std::string& own,
                                                  const std::string& declared) {
  const auto method = CallSignature::from(own);
  const auto hook = CallSignature::from(declared);
  const auto& types = method->arguments();
  bool isSame = method->result().hasShapeOf(hook->result()) &&
                types.size() == hook->arguments().size() && types.size() >= kHidden;
  for (std::size_t i = kHidden; isSame && i < types.size(); ++i)
    isSame = types[i]->hasShapeOf(*hook->arguments()[i]);
  if (!isSame)
    throw UnsupportedType("the method's types are " + own + ", and the hook's " + declared);
  CallSignature::Types merged;
  for (std::size_t i = 0; i < types.size(); ++i)
    merged.push_back(ValueType::merged(types[i], hook->arguments()[i]));
  return std::make_shared<const CallSignature>(
      ValueType::merged(method->sharedResult(), hook->sharedResult()), std::move(merged),
      types.size());
}

/// The class of autorelease pools, or its metaclass. Null where no Foundation is loaded.
Class poolClass(bool isClassMethod) {
  Class pools = ObjCRuntime::classNamed("NSAutoreleasePool");
  return isClassMethod && pools != nullptr ? object_getClass(reinterpret_cast<id>(pools)) : pools;
}

/// Gives the class's own method other code.
///
/// GCC's method_setImplementation() writes the code of a class that has not been initialised to the
/// table of all such classes: any of them would run it. The method is written here instead.
/// Asking for an implementation first would help, too, but runs +initialize.
void setImplementation(Class cls, Method method, IMP code) {
#ifdef __GNU_LIBOBJC__
  struct MethodLayout {
    SEL selector;
    const char* types;
    IMP code;
  };
  reinterpret_cast<MethodLayout*>(method)->code = code;
  tavlenUpdateTables(cls);
#else
  static_cast<void>(cls);
  method_setImplementation(method, code);
#endif
}

}  // namespace

Hook& Hook::install(Engine& engine, Target target) {
  Method method = class_getInstanceMethod(target.cls, target.selector);
  const char* own = method != nullptr ? method_getTypeEncoding(method) : nullptr;
  if (own == nullptr) throw std::runtime_error("the class has no such method");
  Class pools = poolClass(target.isClassMethod);
  if (isSubclass(target.cls, pools))
    throw std::runtime_error("methods of autorelease pools cannot be hooked");
  auto signature = signatureFor(own, target.encoding);
  void* code = nullptr;
  auto* closure = static_cast<ffi_closure*>(ffi_closure_alloc(sizeof(ffi_closure), &code));
  if (!isSubclass(pools, target.cls)) pools = nullptr;
  auto* hook = new Hook(engine, std::move(target), std::move(signature), pools);
  if (closure == nullptr ||
      ffi_prep_closure_loc(closure, hook->signature_->cif(), &Hook::enter, hook, code) != FFI_OK) {
    delete hook;
    if (closure != nullptr) ffi_closure_free(closure);
    throw std::runtime_error("there is no memory for the code of a method");
  }
  hook->replace(reinterpret_cast<IMP>(code));
  return *hook;
}

Hook::Hook(Engine& engine, Target target, std::shared_ptr<const CallSignature> signature,
           Class pools)
    : engine_(engine),
      target_(std::move(target)),
      watched_{engine, target_.text, target_.place},
      signature_(std::move(signature)),
      ended_(CallSignature::ended(signature_)),
      family_(MethodFamily::of(sel_getName(target_.selector), target_.isClassMethod, *signature_)),
      pools_(pools) {}

/// An inherited method is added to the class. GCC's class_replaceMethod() would replace it in the
/// superclass.
void Hook::replace(IMP code) {
  code_ = code;
  Method method = class_getInstanceMethod(target_.cls, target_.selector);
  Class superclass = class_getSuperclass(target_.cls);
  const bool isInherited =
      superclass != nullptr && class_getInstanceMethod(superclass, target_.selector) == method;
  if (isInherited &&
      class_addMethod(target_.cls, target_.selector, code, method_getTypeEncoding(method)) != NO) {
    method_ = class_getInstanceMethod(target_.cls, target_.selector);
  } else {
    method_ = method;
    replace(method);
  }
}

void Hook::replace(Method method) {
  // Before the method is replaced, because another thread may call it at once.
  replaced_ = reinterpret_cast<void (*)()>(method_getImplementation(method));
  setImplementation(target_.cls, method, code_);
}

void Hook::followCategories() {
  Method method = class_getInstanceMethod(target_.cls, target_.selector);
  // Of several threads that load images, one does it.
  if (method != method_.exchange(method)) replace(method);
}

void (*Hook::original() const)() {
  if (void (*const replaced)() = replaced_) return replaced;
  return reinterpret_cast<void (*)()>(
      class_getMethodImplementation(class_getSuperclass(target_.cls), target_.selector));
}

void Hook::enter(ffi_cif* /*cif*/, void* result, void** arguments, void* hook) {
  auto& self = *static_cast<Hook*>(hook);
  // First, because a forked child may find the lock that the stack of a new thread takes held.
  if (self.engine_.isStopped()) return self.callReplaced(arguments, result);
  HookStack& stack = HookStack::current();
  // A pool ends although a wrapper refers to it.
  const bool isOfPool =
      self.pools_ != nullptr && isSubclass(object_getClass(receiverOf(arguments)), self.pools_);
  if (isOfPool || stack.isOwnWork()) return self.callReplaced(arguments, result);
  if (!stack.hasRoom()) {
    self.engine_.reportNoRoom(stack, self.watched_);
    return self.callReplaced(arguments, result);
  }
  self.run(stack, result, arguments);
}

void Hook::run(HookStack& stack, void* result, void** arguments) {
  HookRecord record(*this, watched_, arguments, signature_->resultSize());
  record.ownsReceiver = family_.takesReceiver;
  std::optional<Raised> raised = runScript(stack, record, result);
  if (record.ownsReceiver) engine_.releases().add(receiverOf(arguments), true);
  if (stack.top() == nullptr && !engine_.releases().isEmpty()) engine_.releases().drain();
  if (raised) std::move(*raised).raise();
}

void Hook::readCall(HookStack& stack, HookRecord& record,
                    std::optional<IdentityTable::Lent>& lent) {
  const HookStack::OwnWork own(stack);
  id receiver = receiverOf(record.arguments);
  if (family_.countsReferences)
    record.self = lent.emplace(engine_.objects(), receiver).wrapper();
  else
    record.self = const_cast<JSObjectRef>(engine_.objects().wrapped(receiver, Ownership::borrowed));
  for (std::size_t i = kHidden; i < signature_->arguments().size(); ++i)
    record.values[i - kHidden] =
        readValue(engine_, *signature_->arguments()[i], record.arguments[i]);
}

std::optional<Raised> Hook::runScript(HookStack& stack, HookRecord& record, void* result) {
  std::optional<IdentityTable::Lent> lent;
  if (const auto failure = failureOf([&] { readCall(stack, record, lent); })) {
    reportMistake("the call: " + *failure);
    fallBack(record, result);
    return std::nullopt;
  }
  std::optional<TracedCall> trace;
  // What cannot be shown is not traced.
  if (engine_.isTracing()) (void)failureOf([&] { trace.emplace(*this, record); });
  const std::size_t count = signature_->arguments().size() - kHidden;
  JSValueRef thrown = nullptr;
  JSValueRef value = nullptr;
  {
    const HookStack::Entry entry(stack, record);
    value = JSObjectCallAsFunction(engine_.context(), target_.function, record.self, count,
                                   record.values, &thrown);
  }
  std::optional<Raised> raised = finish(record, value, thrown, result);
  if (trace) (void)failureOf([&] { trace->finish(result, raised ? &*raised : nullptr); });
  return raised;
}

std::optional<Raised> Hook::finish(HookRecord& record, JSValueRef value, JSValueRef thrown,
                                   void* result) {
  {
    // What it returned or threw may have getters.
    const HookStack::OutermostCode computing(watched_);
    if (thrown == nullptr) {
      if (takeAnswer(record, value, result)) return std::nullopt;
    } else if (std::optional<Raised> raised = raisedBy(engine_, thrown)) {
      return raised;
    } else {
      reportThrown(engine_, target_.text, {}, thrown, target_.function);
    }
  }
  fallBack(record, result);
  return std::nullopt;
}

bool Hook::takeAnswer(HookRecord& record, JSValueRef value, void* result) {
  // What the original returned goes on as it came, with what a number does not keep.
  if (value == record.answer && !signature_->result().isAggregate()) {
    returnAnswer(record, result);
    return true;
  }
  if (const auto failure = failureOf([&] {
        writeResult(engine_, signature_->result(), value, result, family_.givesResult);
      })) {
    reportMistake("the result: " + *failure);
    return false;
  }
  return true;
}

/// Gives the caller the original's answer, whose object a wrapper owns by now.
void Hook::returnAnswer(HookRecord& record, void* result) const {
  const std::size_t size =
      signature_->result().kind() == ValueType::Kind::nothing ? 0 : signature_->resultSize();
  std::memcpy(result, record.answerMemory.data(), size);
  if (!family_.givesResult) return;
  const HookStack::OwnWork own;
  // An object may end in its init although a wrapper refers to it.
  if (record.ownsAnswer) return engine_.objects().giveUp(record.answer);
  (void)failureOf([&] { retain(*static_cast<id*>(result)); });  // what refuses is not counted
}

void Hook::reportMistake(const std::string& message) const {
  engine_.reportMistake(target_.text, message, nullptr, target_.function);
}

/// The original's answer, which it gives now unless the script has asked it already.
void Hook::fallBack(HookRecord& record, void* result) {
  if (record.answer != nullptr) return returnAnswer(record, result);
  prepareReceiver(record);
  callReplaced(record.arguments, result);
}

/// A method of the family of init consumes a reference: the caller's the first time, then one made
/// for it.
void Hook::prepareReceiver(HookRecord& record) const {
  if (!family_.takesReceiver || std::exchange(record.ownsReceiver, false)) return;
  const HookStack::OwnWork own;
  retain(receiverOf(record.arguments));
}

void Hook::callReplaced(void** arguments, void* result) const {
  if (ended_ != signature_) return callEnded(arguments, result);
  ffi_call(signature_->cif(), original(), result, arguments);
}

/// Appends the null pointer.
void Hook::callEnded(void** arguments, void* result) const {
  std::array<void*, CallSignature::kMostArguments> places;  // NOLINT: uninitialised
  void* end = nullptr;
  *std::copy_n(arguments, signature_->arguments().size(), places.begin()) =
      static_cast<void*>(&end);
  ffi_call(ended_->cif(), original(), result, places.data());
}

JSValueRef Hook::callOriginal(HookRecord& record, ArgumentFrame& frame) {
  prepareReceiver(record);
  frame.call(original(), record.answerMemory.data());
  // An object that may be gone is not used again.
  auto& receiver = *static_cast<Native*>(JSObjectGetPrivate(record.self));
  if (family_.countsReferences && !static_cast<NativeObject&>(receiver).isOwned)
    receiver.pointer = nullptr;
  const HookStack::OwnWork own;
  if (family_.allocates) {
    void* const answer = record.answerMemory.data();
    record.ownsAnswer = !engine_.objects().isWrapped(*static_cast<id*>(answer));
  }
  record.answer = readValue(engine_, signature_->result(), record.answerMemory.data(),
                            family_.ownershipOfResult());
  return record.answer;
}

}  // namespace tavlen::loader
