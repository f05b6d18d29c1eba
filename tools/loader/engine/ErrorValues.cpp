#include "tools/loader/engine/ErrorValues.h"

#include <cxxabi.h>

#include <exception>

#include "tavlen/foundation/text/Unicode.h"
#include "tools/loader/base/EngineString.h"
#include "tools/loader/base/Messages.h"
#include "tools/loader/engine/Engine.h"
#include "tools/loader/engine/HookStack.h"
#include "tools/loader/engine/Native.h"
#include "tools/loader/engine/ProgramCode.h"
#include "tools/loader/engine/ShownValue.h"

namespace tavlen::loader {

namespace {

constexpr const char* kException = "exception";

/// "NSRangeException: index 3 beyond 1", or the class of an object that is no NSException.
std::u16string textOfRaised(id object) {
  if (object == nullptr) return u"a C++ exception";
  if (!ObjCRuntime::isKindOf(object, "NSException")) {
    const std::string name = className(object);
    return std::u16string(name.begin(), name.end());
  }
  static const SEL kName = ObjCRuntime::selectorNamed("name");
  static const SEL kReason = ObjCRuntime::selectorNamed("reason");
  const HookStack::OwnWork own;
  return textOf(message(object, kName)) + u": " + textOf(message(object, kReason));
}

JSObjectRef makeError(Engine& engine, JSValueRef message) {
  return JSObjectMakeError(engine.context(), 1, &message, nullptr);
}

}  // namespace

JSValueRef errorOf(Engine& engine, const std::string& message) {
  return makeError(engine, stringValue(engine.context(), message));
}

JSValueRef errorOf(Engine& engine, Raised raised) {
  JSContextRef context = engine.context();
  JSObjectRef error = makeError(engine, stringValue(context, textOfRaised(raised.object())));
  const JSValueRef carried =
      raised.object() != nullptr
          ? engine.objects().wrapped(raised.object(), Ownership::borrowed)
          : JSObjectMake(context, nativeClass(), new NativeException(engine, std::move(raised)));
  setProperty(context, error, kException, carried);
  return error;
}

std::optional<Raised> raisedBy(Engine& engine, JSValueRef thrown) {
  JSContextRef context = engine.context();
  if (!JSValueIsObject(context, thrown)) return std::nullopt;
  const Native* native = Native::of(context, thrown);
  if (native == nullptr) {
    native = Native::of(context, propertyOf(context, const_cast<JSObjectRef>(thrown), kException));
    if (native == nullptr) return std::nullopt;
  }
  if (native->kind == Native::Kind::exception)
    return static_cast<const NativeException*>(native)->raised;
  if (native->kind != Native::Kind::object || native->pointer == nullptr) return std::nullopt;
  return Raised::retaining(static_cast<id>(native->pointer));
}

std::string messageOf(Engine& engine, JSValueRef thrown) {
  JSContextRef context = engine.context();
  if (!JSValueIsObject(context, thrown) || Native::of(context, thrown) != nullptr)
    return shownValue(engine, thrown);
  auto* object = const_cast<JSObjectRef>(thrown);
  const JSValueRef name = propertyOf(context, object, "name");
  const JSValueRef message = propertyOf(context, object, "message");
  if (!JSValueIsString(context, message)) return shownValue(engine, thrown);
  const EngineString whole(context, message);
  const std::string text = utf8FromUTF16(whole.units().substr(0, LoaderEvent::kLongestText + 1));
  // The loader's own errors are plain ones, whose name would tell nothing.
  const std::string kind =
      JSValueIsString(context, name) ? EngineString(context, name).utf8() : "Error";
  return kind == "Error" ? text : kind + ": " + text;
}

void reportThrown(Engine& engine, const std::string& method, const std::string& prefix,
                  JSValueRef thrown, JSObjectRef function) {
  const auto report = [&](const std::string& message, JSValueRef placed) {
    engine.reportMistake(method, prefix + message, placed, function);
  };
  if (failureOf([&] { report(messageOf(engine, thrown), thrown); }))
    report("an error that cannot be shown", nullptr);
}

std::optional<std::string> failureOf(FunctionRef<void()> body) {
  try {
    id raised = guarded(body);
    if (raised == nullptr) return std::nullopt;
    std::u16string text;
    release(guarded([&] { text = textOfRaised(raised); }));
    release(raised);
    return text.empty() ? "an Objective-C exception" : utf8FromUTF16(text);
  } catch (const ProgramException&) {
    throw;
  } catch (const std::exception& error) {
    return error.what();
#ifdef __GLIBCXX__
  } catch (const abi::__forced_unwind&) {
    throw;  // the end of the thread, which unwinds it with this library alone
#endif
  } catch (...) {
    return "a C++ exception";
  }
}

}  // namespace tavlen::loader
