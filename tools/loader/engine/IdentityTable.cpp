#include "tools/loader/engine/IdentityTable.h"

#include <objc/runtime.h>

#include <array>

#include "tools/loader/base/Messages.h"
#include "tools/loader/engine/Engine.h"
#include "tools/loader/engine/Native.h"

namespace tavlen::loader {

namespace {

/// Addresses of objects have fewer bits than a number keeps exactly.
JSValueRef keyOf(JSContextRef context, id object) {
  return JSValueMakeNumber(context, static_cast<double>(reinterpret_cast<std::uintptr_t>(object)));
}

}  // namespace

JSObjectRef IdentityTable::found(id object) {
  JSContextRef context = engine_.context();
  const JSValueRef key = keyOf(context, object);
  JSValueRef exception = nullptr;
  const JSValueRef value =
      JSObjectCallAsFunction(context, functions_.find, nullptr, 1, &key, &exception);
  if (exception != nullptr) return nullptr;
  const Native* native = Native::of(context, value);
  return native != nullptr && native->pointer == object ? const_cast<JSObjectRef>(value) : nullptr;
}

JSObjectRef IdentityTable::make(id object, bool isOwned) {
  JSContextRef context = engine_.context();
  JSObjectRef wrapper =
      JSObjectMake(context, nativeClass(), new NativeObject(engine_, object, isOwned));
  const auto arguments = std::to_array<JSValueRef>({keyOf(context, object), wrapper});
  JSValueRef ignored = nullptr;
  JSObjectCallAsFunction(context, functions_.keep, nullptr, arguments.size(), arguments.data(),
                         &ignored);
  return wrapper;
}

JSObjectRef IdentityTable::classWrapper(Class cls) {
  const std::lock_guard lock(lock_);
  const auto [place, isNew] = classes_.try_emplace(cls);
  if (isNew) {
    place->second =
        JSObjectMake(engine_.context(), nativeClass(),
                     new Native(engine_, Native::Kind::class_, reinterpret_cast<void*>(cls)));
    JSValueProtect(engine_.context(), place->second);
  }
  return place->second;
}

JSValueRef IdentityTable::wrapped(id object, Ownership ownership) {
  if (object == nullptr) return JSValueMakeNull(engine_.context());
  if (isClass(object)) return classWrapper(reinterpret_cast<Class>(object));
  JSObjectRef wrapper = found(object);
  if (wrapper == nullptr) {
    const std::lock_guard lock(lock_);
    wrapper = found(object);
    if (wrapper == nullptr) {
      if (ownership == Ownership::borrowed) retain(object);
      return make(object, true);
    }
  }
  // The wrapper has a reference already. It is not the last, so that nothing is deallocated here.
  if (ownership == Ownership::adopted) release(object);
  return wrapper;
}

JSValueRef IdentityTable::selector(SEL selector) {
  if (selector == nullptr) return JSValueMakeNull(engine_.context());
  const char* name = sel_getName(selector);
  const std::lock_guard lock(lock_);
  const auto [place, isNew] = selectors_.try_emplace(name);
  if (isNew) {
    // Selectors of one name may differ in the types that they carry.
    void* plain = const_cast<void*>(static_cast<const void*>(ObjCRuntime::selectorNamed(name)));
    place->second = JSObjectMake(engine_.context(), nativeClass(),
                                 new Native(engine_, Native::Kind::selector, plain));
    JSValueProtect(engine_.context(), place->second);
  }
  return place->second;
}

JSValueRef IdentityTable::pointer(void* address) {
  if (address == nullptr) return JSValueMakeNull(engine_.context());
  return JSObjectMake(engine_.context(), nativeClass(),
                      new Native(engine_, Native::Kind::pointer, address));
}

void IdentityTable::forget(id object) {
  JSContextRef context = engine_.context();
  const JSValueRef key = keyOf(context, object);
  JSValueRef ignored = nullptr;
  JSObjectCallAsFunction(context, functions_.forget, nullptr, 1, &key, &ignored);
}

/// Makes the wrapper dead.
void IdentityTable::end(JSObjectRef wrapper, id object) {
  static_cast<Native*>(JSObjectGetPrivate(wrapper))->pointer = nullptr;
  const auto arguments = std::to_array<JSValueRef>({keyOf(engine_.context(), object), wrapper});
  JSValueRef ignored = nullptr;
  JSObjectCallAsFunction(engine_.context(), functions_.forget, nullptr, arguments.size(),
                         arguments.data(), &ignored);
}

void IdentityTable::giveUp(JSValueRef value) {
  const Native* native = Native::of(engine_.context(), value);
  if (native != nullptr && native->kind == Native::Kind::object)
    end(const_cast<JSObjectRef>(value), static_cast<id>(native->pointer));
}

IdentityTable::Lent::Lent(IdentityTable& table, id object)
    : table_(table), object_(object), wrapper_(table.found(object)) {
  if (wrapper_ != nullptr) return;
  isOwn_ = true;
  wrapper_ = table_.make(object_, false);
}

IdentityTable::Lent::~Lent() {
  if (isOwn_) table_.end(wrapper_, object_);
}

}  // namespace tavlen::loader
