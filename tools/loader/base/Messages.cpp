#include "tools/loader/base/Messages.h"

#include <objc/runtime.h>

namespace tavlen::loader {

namespace {

using ObjCRuntime::selectorNamed;

/// Whether `object` is one whose references are counted.
bool isCounted(id object) {
  if (object == nullptr || isClass(object)) return false;
  static const SEL kRetain = selectorNamed("retain");
  return class_respondsToSelector(object_getClass(object), kRetain) != NO;
}

}  // namespace

id retain(id object) {
  static const SEL kRetain = selectorNamed("retain");
  return isCounted(object) ? message(object, kRetain) : object;
}

void release(id object) {
  static const SEL kRelease = selectorNamed("release");
  if (isCounted(object)) message<void>(object, kRelease);
}

id autorelease(id object) {
  static const SEL kAutorelease = selectorNamed("autorelease");
  return isCounted(object) ? message(object, kAutorelease) : object;
}

bool isClass(id object) { return class_isMetaClass(object_getClass(object)) != NO; }

bool isSubclass(Class cls, Class ancestor) {
  while (cls != nullptr && cls != ancestor) cls = class_getSuperclass(cls);
  return cls != nullptr;
}

std::string className(id object) {
  return class_getName(isClass(object) ? reinterpret_cast<Class>(object) : object_getClass(object));
}

std::string methodText(Class cls, SEL selector, bool isClassMethod) {
  return std::string(isClassMethod ? "+[" : "-[") + class_getName(cls) + ' ' +
         sel_getName(selector) + ']';
}

std::u16string textOf(id string) {
  if (string == nullptr || isClass(string) || !ObjCRuntime::isKindOf(string, "NSString")) return {};
  struct Range {
    unsigned long location;
    unsigned long length;
  };
  static const SEL kLength = selectorNamed("length");
  static const SEL kGetCharacters = selectorNamed("getCharacters:range:");
  const auto length = message<unsigned long>(string, kLength);
  std::u16string text(length, u'\0');
  if (length > 0) message<void>(string, kGetCharacters, text.data(), Range{0, length});
  return text;
}

id newString(std::u16string_view text) {
  static const SEL kAlloc = selectorNamed("alloc");
  static const SEL kInit = selectorNamed("initWithCharacters:length:");
  Class cls = ObjCRuntime::classNamed("NSString");
  if (cls == nullptr) return nullptr;
  return message(message(cls, kAlloc), kInit, text.data(), static_cast<unsigned long>(text.size()));
}

}  // namespace tavlen::loader
