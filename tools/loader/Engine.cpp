#include "tools/loader/Engine.h"

#include <array>
#include <utility>

#include "tools/loader/Boxing.h"
#include "tools/loader/ClassNames.h"
#include "tools/loader/EngineString.h"
#include "tools/loader/ErrorValues.h"
#include "tools/loader/FunctionCall.h"
#include "tools/loader/HookStack.h"
#include "tools/loader/Messages.h"
#include "tools/loader/MethodCall.h"
#include "tools/loader/OriginalCall.h"
#include "tools/loader/ShownValue.h"

namespace tavlen::loader {

namespace {

/// What the engine does better itself: weak references, the spreading of arguments, accessors of
/// names.
constexpr const char* kPrelude = R"JS((function(callOriginal, lookUpClass, global) {
  "use strict";
  const Weak = WeakRef, defineProperty = Object.defineProperty, wrappers = new Map();
  const calleeOf = current => {
    try { return current.callee; } catch { return undefined; }
  };
  return {
    find: key => wrappers.get(key)?.deref(),
    keep: (key, wrapper) => { wrappers.set(key, new Weak(wrapper)); },
    forget: (key, own) => {
      const wrapper = wrappers.get(key)?.deref();
      if (wrapper === undefined || wrapper === own) wrappers.delete(key);
    },
    original: (self, current, given) => given === undefined
      ? callOriginal(self, calleeOf(current), false, ...current)
      : callOriginal(self, calleeOf(current), true, ...given),
    defineClass: name => {
      const define = value => defineProperty(global, name, { value, writable: true, configurable: true });
      defineProperty(global, name, {
        get() {
          const found = lookUpClass(name);
          if (found === undefined) throw new ReferenceError("the program has no class " + name);
          define(found);
          return found;
        },
        set: define,
        configurable: true,
      });
    },
  };
}))JS";

/// objc_box(value).
struct Box : NativeFunction {
  using NativeFunction::NativeFunction;

  JSValueRef call(const Call& call) override {
    return engine.objects().wrapped(boxed(engine, call[0]), Ownership::borrowed);
  }
};

/// objc_dictionary(entries).
struct DictionaryBox : NativeFunction {
  using NativeFunction::NativeFunction;

  JSValueRef call(const Call& call) override {
    return engine.objects().wrapped(boxedDictionary(engine, call[0]), Ownership::borrowed);
  }
};

/// objc_selector(name).
struct SelectorBox : NativeFunction {
  using NativeFunction::NativeFunction;

  JSValueRef call(const Call& call) override {
    if (!JSValueIsString(call.context, call[0]))
      throw ScriptError("expected the name of a selector, got " + shownValue(engine, call[0]));
    return engine.objects().selector(
        ObjCRuntime::selectorNamed(EngineString(call.context, call[0]).utf8().c_str()));
  }
};

}  // namespace

Engine& Engine::make(TweakCode tweak, EventReceiver& receiver, bool isTracing) {
  return *new Engine(std::move(tweak), receiver, isTracing);
}

Engine::Engine(TweakCode tweak, EventReceiver& receiver, bool isTracing)
    : tweak_(std::move(tweak)),
      receiver_(receiver),
      isTracing_(isTracing),
      places_(tweak_.code, tweak_.map),
      context_(JSGlobalContextCreate(nullptr)),
      objects_(*this),
      releases_(*this),
      hooks_(*new HookRequests(*this)) {
  defineGlobals();
}

void Engine::setGlobal(const char* name, JSValueRef value) {
  setProperty(context_, JSContextGetGlobalObject(context_), name, value);
}

JSObjectRef Engine::makeFunction(NativeFunction* function) {
  JSObjectRef object = JSObjectMake(context_, nativeFunctionClass(), function);
  JSValueProtect(context_, object);
  return object;
}

void Engine::defineGlobals() {
  JSObjectRef global = JSContextGetGlobalObject(context_);
  const JSValueRef factory =
      JSEvaluateScript(context_, EngineString(kPrelude).get(), nullptr, nullptr, 0, nullptr);
  const auto arguments = std::to_array<JSValueRef>(
      {makeFunction(new OriginalCall(*this)), makeFunction(new ClassLookup(*this)), global});
  auto* parts = const_cast<JSObjectRef>(
      JSObjectCallAsFunction(context_, const_cast<JSObjectRef>(factory), nullptr, arguments.size(),
                             arguments.data(), nullptr));
  JSValueProtect(context_, parts);
  const auto part = [&](const char* name) {
    return const_cast<JSObjectRef>(propertyOf(context_, parts, name));
  };
  objects_.use({part("find"), part("keep"), part("forget")});
  setGlobal("objc_orig", part("original"));
  setGlobal("objc_send", makeFunction(new MethodCall(*this)));
  setGlobal("objc_box", makeFunction(new Box(*this)));
  setGlobal("objc_dictionary", makeFunction(new DictionaryBox(*this)));
  setGlobal("objc_selector", makeFunction(new SelectorBox(*this)));
  setGlobal("loadFunc", makeFunction(new FunctionLookup(*this)));
  setGlobal("hookClass", makeFunction(&hooks_));
  const HookStack::OwnWork own;
  if (id path = newString(EngineString(tweak_.resources).units()))
    setGlobal("resourcesPath", objects_.wrapped(path, Ownership::adopted));
  defineClassNames(part("defineClass"));
}

/// Asking for every unknown name costs more at each use than defining those that the code contains.
/// A class that is not loaded yet begins with a capital letter or an underscore, as classes do.
void Engine::defineClassNames(JSObjectRef define) {
  for (const std::string& word : wordsOf(tweak_.code)) {
    const bool mayComeLater = (word.front() >= 'A' && word.front() <= 'Z') || word.front() == '_';
    if (!mayComeLater && ObjCRuntime::classNamed(word.c_str()) == nullptr) continue;
    if (JSObjectHasProperty(context_, JSContextGetGlobalObject(context_), EngineString(word).get()))
      continue;
    const JSValueRef name = stringValue(context_, word);
    JSObjectCallAsFunction(context_, define, nullptr, 1, &name, nullptr);
  }
}

void Engine::run() {
  JSValueRef thrown = nullptr;
  JSEvaluateScript(context_, EngineString(tweak_.code).get(), nullptr,
                   EngineString(ScriptPlaces::kCodeURL).get(), 1, &thrown);
  if (thrown != nullptr) reportMistake({}, messageOf(*this, thrown), thrown, nullptr);
  if (!releases_.isEmpty()) releases_.drain();
}

std::optional<TextPosition> Engine::placeOf(JSValueRef thrown, JSObjectRef function) const {
  std::optional<TextPosition> place;
  if (thrown != nullptr) place = places_.placeOf(context_, thrown);
  if (place || function == nullptr) return place;
  JSStringRef text = JSValueToStringCopy(context_, function, nullptr);
  return text == nullptr ? place : places_.placeOf(EngineString(text).utf8());
}

void Engine::reportMistake(const std::string& method, const std::string& message, JSValueRef thrown,
                           JSObjectRef function) {
  constexpr std::size_t kMostRemembered = 1000;
  const std::optional<TextPosition> place = placeOf(thrown, function);
  LoaderEvent event{.event = LoaderEvent::kMistake, .message = message};
  if (!method.empty()) event.method = method;
  if (place) {
    event.line = place->line;
    event.column = place->column;
  }
  {
    const std::lock_guard lock(lock_);
    const std::string key = method + '\n' + message + '\n' + std::to_string(event.line.value_or(0));
    if (mistakes_.size() >= kMostRemembered || !mistakes_.insert(key).second) return;
  }
  report(event);
}

}  // namespace tavlen::loader
