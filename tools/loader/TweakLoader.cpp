#include "tools/loader/TweakLoader.h"

#include <array>
#include <string>
#include <utility>

#include "tools/loader/ClassNames.h"
#include "tools/loader/base/EngineString.h"
#include "tools/loader/base/Messages.h"
#include "tools/loader/calls/FunctionLookup.h"
#include "tools/loader/calls/MethodCall.h"
#include "tools/loader/engine/ErrorValues.h"
#include "tools/loader/engine/HookStack.h"
#include "tools/loader/engine/RejectedPromises.h"
#include "tools/loader/engine/ShownValue.h"
#include "tools/loader/hooks/OriginalCall.h"
#include "tools/loader/values/BlockType.h"
#include "tools/loader/values/BlockValue.h"
#include "tools/loader/values/Boxing.h"
#include "tools/loader/values/ScriptBlock.h"

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

/// objc_block(types, function).
struct BlockMaker : NativeFunction {
  using NativeFunction::NativeFunction;

  JSValueRef call(const Call& call) override {
    auto* function = const_cast<JSObjectRef>(call[1]);
    if (!JSValueIsString(call.context, call[0]) || !JSValueIsObject(call.context, function) ||
        !JSObjectIsFunction(call.context, function))
      throw ScriptError("objc_block: expected the types of a block and a function");
    try {
      const HookStack::OwnWork own;
      const BlockType& type = BlockType::without(EngineString(call.context, call[0]).utf8());
      return BlockValue::adopting(engine, type, newScriptBlock(engine, type, function));
    } catch (const UnsupportedType& error) {
      throw ScriptError(std::string("objc_block: ") + error.what());
    }
  }
};

}  // namespace

TweakLoader& TweakLoader::make(TweakCode tweak, EventReceiver& receiver, bool isTracing) {
  return *new TweakLoader(std::move(tweak), receiver, isTracing);
}

TweakLoader::TweakLoader(TweakCode tweak, EventReceiver& receiver, bool isTracing)
    : tweak_(std::move(tweak)),
      engine_(tweak_.code, tweak_.map, receiver, isTracing),
      hooks_(*new HookRequests(engine_)) {
  defineGlobals();
  reportRejectedPromises(engine_);
}

void TweakLoader::setGlobal(const char* name, JSValueRef value) {
  setProperty(engine_.context(), JSContextGetGlobalObject(engine_.context()), name, value);
}

JSObjectRef TweakLoader::makeFunction(NativeFunction* function) {
  JSObjectRef object = JSObjectMake(engine_.context(), nativeFunctionClass(), function);
  JSValueProtect(engine_.context(), object);
  return object;
}

void TweakLoader::defineGlobals() {
  JSObjectRef global = JSContextGetGlobalObject(engine_.context());
  const JSValueRef factory = JSEvaluateScript(engine_.context(), EngineString(kPrelude).get(),
                                              nullptr, nullptr, 0, nullptr);
  const auto arguments = std::to_array<JSValueRef>(
      {makeFunction(new OriginalCall(engine_)), makeFunction(new ClassLookup(engine_)), global});
  auto* parts = const_cast<JSObjectRef>(
      JSObjectCallAsFunction(engine_.context(), const_cast<JSObjectRef>(factory), nullptr,
                             arguments.size(), arguments.data(), nullptr));
  JSValueProtect(engine_.context(), parts);
  const auto part = [&](const char* name) {
    return const_cast<JSObjectRef>(propertyOf(engine_.context(), parts, name));
  };
  engine_.objects().use({part("find"), part("keep"), part("forget")});
  setGlobal("objc_orig", part("original"));
  setGlobal("objc_send", makeFunction(new MethodCall(engine_)));
  setGlobal("objc_box", makeFunction(new Box(engine_)));
  setGlobal("objc_dictionary", makeFunction(new DictionaryBox(engine_)));
  setGlobal("objc_selector", makeFunction(new SelectorBox(engine_)));
  setGlobal("objc_block", makeFunction(new BlockMaker(engine_)));
  setGlobal("loadFunc", makeFunction(new FunctionLookup(engine_)));
  setGlobal("hookClass", makeFunction(&hooks_));
  const HookStack::OwnWork own;
  if (id path = newString(EngineString(tweak_.resources).units()))
    setGlobal("resourcesPath", engine_.objects().wrapped(path, Ownership::adopted));
  defineClassNames(part("defineClass"));
}

/// Asking for every unknown name costs more at each use than defining those that the code contains.
/// A class that is not loaded yet begins with a capital letter or an underscore, as classes do.
void TweakLoader::defineClassNames(JSObjectRef define) {
  for (const std::string& word : wordsOf(tweak_.code)) {
    const bool mayComeLater = (word.front() >= 'A' && word.front() <= 'Z') || word.front() == '_';
    if (!mayComeLater && ObjCRuntime::classNamed(word.c_str()) == nullptr) continue;
    if (JSObjectHasProperty(engine_.context(), JSContextGetGlobalObject(engine_.context()),
                            EngineString(word).get()))
      continue;
    const JSValueRef name = stringValue(engine_.context(), word);
    JSObjectCallAsFunction(engine_.context(), define, nullptr, 1, &name, nullptr);
  }
}

void TweakLoader::run() {
  const ObjCRuntime::AutoreleasePool pool;  // the program has none yet
  JSValueRef thrown = nullptr;
  {
    const HookStack::OutermostCode computing(engine_.outside());
    JSEvaluateScript(engine_.context(), EngineString(tweak_.code).get(), nullptr,
                     EngineString(ScriptPlaces::kCodeURL).get(), 1, &thrown);
  }
  if (thrown != nullptr) engine_.reportMistake({}, messageOf(engine_, thrown), thrown, nullptr);
  if (!engine_.releases().isEmpty()) engine_.releases().drain();
}

}  // namespace tavlen::loader
