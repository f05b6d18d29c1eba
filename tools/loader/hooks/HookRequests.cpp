#include "tools/loader/hooks/HookRequests.h"

#include <objc/runtime.h>

#include <algorithm>
#include <exception>
#include <iterator>
#include <utility>

#include "tavlen/foundation/json/JSONEncoder.h"
#include "tools/loader/base/EngineString.h"
#include "tools/loader/base/Messages.h"
#include "tools/loader/engine/Engine.h"
#include "tools/loader/engine/ShownValue.h"
#include "tools/loader/hooks/Hook.h"

namespace tavlen::loader {

namespace {

/// The names of the properties of `object` that a loop over it meets, in their order.
std::vector<std::string> keysOf(JSContextRef context, JSObjectRef object) {
  JSPropertyNameArrayRef names = JSObjectCopyPropertyNames(context, object);
  std::vector<std::string> keys;
  for (std::size_t i = 0; i < JSPropertyNameArrayGetCount(names); ++i)
    keys.push_back(
        EngineString(JSStringRetain(JSPropertyNameArrayGetNameAtIndex(names, i))).utf8());
  JSPropertyNameArrayRelease(names);
  return keys;
}

}  // namespace

/// The key's selector begins after the last sign: encodings may contain one in a name, selectors
/// none.
HookRequests::Request HookRequests::requestOf(const std::string& className, const std::string& key,
                                              JSValueRef function,
                                              ScriptPlaces::Search& places) const {
  const std::size_t sign = key.find_last_of("+-");
  if (sign == std::string::npos)
    throw ScriptError("hookClass: the key \"" + key +
                      "\" is not a type encoding, - or +, and a selector");
  if (!JSValueIsObject(engine.context(), function) ||
      !JSObjectIsFunction(engine.context(), const_cast<JSObjectRef>(function))) {
    throw ScriptError("hookClass: \"" + key + "\": expected a function, got " +
                      shownValue(engine, function));
  }
  Request request{className,
                  {},
                  key.substr(sign + 1),
                  key.substr(0, sign),
                  key[sign] == '+',
                  const_cast<JSObjectRef>(function),
                  {}};
  request.text = key[sign] + ('[' + className + ' ' + request.selector + ']');
  std::string literal;
  appendJSON(literal, key);
  request.place = places.next(literal);
  JSValueProtect(engine.context(), function);
  return request;
}

JSValueRef HookRequests::call(const Call& call) {
  JSContextRef context = call.context;
  if (!JSValueIsString(context, call[0]))
    throw ScriptError("hookClass: expected the name of a class");
  if (!JSValueIsObject(context, call[2]))
    throw ScriptError("hookClass: expected an object with methods");
  auto* const* unused = call.count > 1 ? call.arguments + 1 : nullptr;
  if (unused != nullptr && JSValueIsObject(context, *unused) &&
      !keysOf(context, const_cast<JSObjectRef>(*unused)).empty()) {
    throw ScriptError("hookClass: the second argument has no meaning and must be empty");
  }
  const std::string className = EngineString(context, call[0]).utf8();
  auto* methods = const_cast<JSObjectRef>(call[2]);
  std::string opening = "hookClass(";
  appendJSON(opening, className);
  ScriptPlaces::Search places(engine.places(), opening);
  for (const std::string& key : keysOf(context, methods)) {
    Request request = requestOf(className, key, propertyOf(context, methods, key.c_str()), places);
    installOrWait(std::move(request));
  }
  return JSValueMakeUndefined(context);
}

/// An image that comes between the attempt and the list's lock leads to another attempt.
void HookRequests::installOrWait(Request request) {
  std::unique_lock lock(lock_);
  for (bool hasReported = false;;) {
    const std::uint64_t seen = images_;
    lock.unlock();
    if (hasReported ? installLate(request) : install(request)) return;
    if (!std::exchange(hasReported, true))
      report(LoaderEvent::kWaiting, request, "no image has the class " + request.className);
    lock.lock();
    if (images_ != seen) continue;
    waiting_.push_back(std::move(request));
    return;
  }
}

/// Repeated if another image, whose retry() finds the list empty, has come during it.
void HookRequests::retry() {
  std::unique_lock lock(lock_);
  const auto hooks = hooks_;
  lock.unlock();
  for (const auto& [method, hook] : hooks) hook->followCategories();
  lock.lock();
  for (std::uint64_t seen = ++images_; !waiting_.empty(); seen = images_) {
    std::vector<Request> waiting;
    waiting.swap(waiting_);
    lock.unlock();
    std::erase_if(waiting, [&](Request& request) { return installLate(request); });
    lock.lock();
    std::move(waiting.begin(), waiting.end(), std::back_inserter(waiting_));
    if (images_ == seen) return;
  }
}

/// The class that has the method; null if it is not loaded.
Class HookRequests::Request::owner() const {
  Class cls = ObjCRuntime::classNamed(className.c_str());
  return isClassMethod && cls != nullptr ? object_getClass(reinterpret_cast<id>(cls)) : cls;
}

/// As install(), for a class of an image that is being loaded: a category, which comes after it,
/// may bring the method.
bool HookRequests::installLate(Request& request) {
  Class cls = request.owner();
  if (cls == nullptr) return false;
  if (class_getInstanceMethod(cls, ObjCRuntime::selectorNamed(request.selector.c_str())) != nullptr)
    return install(request);
  if (!std::exchange(request.lacksMethod, true))
    report(LoaderEvent::kWaiting, request, "the class has no such method");
  return false;
}

/// Returns false if the class is not loaded. A method that cannot be hooked is reported.
bool HookRequests::install(const Request& request) {
  Class cls = request.owner();
  if (cls == nullptr) return false;
  try {
    SEL selector = ObjCRuntime::selectorNamed(request.selector.c_str());
    Hook& hook = Hook::install(engine, {cls, selector, request.text, request.isClassMethod,
                                        request.encoding, request.function, request.place});
    {
      const std::lock_guard lock(lock_);
      hooks_.insert_or_assign({cls, selector}, &hook);
    }
    report(LoaderEvent::kHooked, request, {});
  } catch (const std::exception& error) {
    report(LoaderEvent::kRefused, request, error.what());
  }
  return true;
}

void HookRequests::report(const char* event, const Request& request,
                          const std::string& message) const {
  LoaderEvent reported{.event = event, .method = request.text};
  if (!message.empty()) reported.message = message;
  if (request.place) {
    reported.line = request.place->line;
    reported.column = request.place->column;
  }
  engine.report(reported);
}

}  // namespace tavlen::loader
