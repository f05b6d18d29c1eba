#include "tavlen/tweaks/TweakProcessor.h"

#include <utility>

#include "tavlen/foundation/base/FatalError.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/tweaks/HookSource.h"
#include "tavlen/tweaks/Manifest.h"

namespace tavlen {

namespace {

constexpr const char* kTranspilerFile = "ob.js";
constexpr std::string_view kTranspilerGlobal = "OBJSTranspiler";

constexpr const char* kNone = "undefined";

/// Runs the script, and returns the global, which is undefined if the script does not define it.
JavaScriptValue evaluatedTranspiler(const std::filesystem::path& container) {
  const std::string script = readText(container / kTranspilerFile);
  const std::shared_ptr<JavaScriptContext> context = JavaScriptContext::make();
  // An exception is not fatal yet: the global may be defined nevertheless, and the first conversion
  // reports the exception.
  context->evaluate(script, kTranspilerFile);
  return context->globalObject().property(kTranspilerGlobal, JavaScriptValue::Exceptions::ignore);
}

JavaScriptValue loadTranspiler(const std::filesystem::path& container) {
  JavaScriptValue transpiler = evaluatedTranspiler(container);
  if (transpiler.isUndefined())
    fatalError("the transpiler script \"ob.js\" does not define OBJSTranspiler");
  return transpiler;
}

/// A property, converted to text by the engine: "undefined" if it is missing or cannot be read.
std::string shownProperty(const JavaScriptValue& value, std::string_view name) {
  constexpr auto kIgnore = JavaScriptValue::Exceptions::ignore;
  return value.property(name, kIgnore).text(kIgnore).value_or(kNone);
}

TweakProcessor::Error errorOf(const JavaScriptValue& exception) {
  constexpr auto kIgnore = JavaScriptValue::Exceptions::ignore;
  // A text has no properties that could say what went wrong; it says so itself.
  if (exception.isString()) return TweakProcessor::Error::thrownText(*exception.text(kIgnore));
  const JavaScriptValue stack = exception.property("stack", kIgnore);
  return TweakProcessor::Error::jsException(
      shownProperty(exception, "name"), shownProperty(exception, "message"),
      stack.isUndefined() ? std::nullopt : stack.text(kIgnore));
}

std::optional<std::string> stringProperty(const JavaScriptValue& object, std::string_view name) {
  const JavaScriptValue value = object.property(name);
  return value.isString() ? value.text() : std::nullopt;
}

/// Whether the property is a getter of the object itself. Does not run it.
bool hasGetter(const JavaScriptValue& object, std::string_view name) {
  JavaScriptContext& context = object.context();
  return context.globalObject()
      .property("Object")
      .call("getOwnPropertyDescriptor", {object, context.string(name)})
      .property("get", JavaScriptValue::Exceptions::ignore)  // there may be no property
      .isObject();
}

}  // namespace

TweakProcessor::TweakProcessor(const std::filesystem::path& container)
    : objs_(loadTranspiler(container)) {}

bool TweakProcessor::isTranspiler(const std::filesystem::path& container) {
  const JavaScriptValue transpiler = evaluatedTranspiler(container);
  if (!transpiler.isUndefined()) return true;
  if (const auto exception = transpiler.context().exception()) throw errorOf(*exception);
  return false;
}

TweakProcessor::Output TweakProcessor::convert(std::string_view code, Map map) {
  const JavaScriptValue result = objs_.call("transpile", {objs_.context().string(code)});
  if (const auto exception = objs_.context().exception()) throw errorOf(*exception);
  if (!result.isObject()) throw Error::invalidOutput();
  std::optional<std::string> output = stringProperty(result, "code");
  if (!output) throw Error::invalidOutput();
  if (map == Map::leaveOut && hasGetter(result, "map")) return {std::move(*output), {}};
  std::optional<std::string> mapText = stringProperty(result, "map");
  if (!mapText) throw Error::invalidOutput();
  if (map == Map::leaveOut) mapText->clear();
  return {std::move(*output), std::move(*mapText)};
}

std::string TweakProcessor::generateCode(std::span<const Hook> hooks) {
  return generateHookSource(hooks).text;
}

std::string TweakProcessor::assembled(std::string generatedCode, std::string_view script) {
  if (!generatedCode.empty()) generatedCode += "\n\n";
  return generatedCode += script;
}

TweakProcessor::Output TweakProcessor::process(const TweakFile::Manifest& manifest,
                                               std::string_view script) {
  return convert(assembled(generateCode(manifest.hooks()), script));
}

TweakProcessor::Output TweakProcessor::process(const TweakFile& tweak) {
  return process(tweak.manifest(), tweak.script());
}

TweakProcessor::Error TweakProcessor::Error::jsException(std::string name, std::string message,
                                                         std::optional<std::string> stack) {
  Error error(Case::jsException, {});
  error.nameAndMessage_ = name + ": " + message;
  error.name_ = std::move(name);
  error.message_ = std::move(message);
  error.stack_ = std::move(stack);
  return error;
}

TweakProcessor::Error TweakProcessor::Error::thrownText(std::string text) {
  Error error(Case::jsException, {});
  error.nameAndMessage_ = text;
  error.message_ = std::move(text);
  return error;
}

TweakProcessor::Error TweakProcessor::Error::invalidOutput() {
  return {Case::invalidOutput,
          {"tweak_processor.error.invalid_output", "Transpiler output was not a String"}};
}

std::string TweakProcessor::Error::reason() const {
  if (name_ == kNone) return message_ == kNone ? "a value that is no error was thrown" : message_;
  // A thrown text has no name, and may be that word.
  return message_ == kNone && !name_.empty() ? name_ : nameAndMessage_;
}

std::string TweakProcessor::Error::description() const {
  if (case_ != Case::jsException) return LocalizedError::description();
  std::string text = nameAndMessage_;
  if (stack_) text += "\n\nCall stack:\n" + *stack_;
  return text;
}

}  // namespace tavlen
