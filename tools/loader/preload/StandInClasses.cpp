#include "tools/loader/preload/StandInClasses.h"

#include <objc/runtime.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <span>
#include <string>

#include "tools/loader/base/Messages.h"

namespace tavlen::loader {

namespace {

using ObjCRuntime::classNamed;
using ObjCRuntime::selectorNamed;
using ObjCRuntime::send;

struct MethodEntry {
  const char* selector;
  IMP code;
  const char* types;
};

template <class Function>
IMP code(Function* function) {
  return reinterpret_cast<IMP>(reinterpret_cast<void (*)()>(function));
}

/// The instance variables of an object of the class `cls` itself, which follow its superclass's.
template <class State>
State& stateOf(id object, const char* cls) {
  Ivar place = class_getInstanceVariable(classNamed(cls), "state");
  return *reinterpret_cast<State*>(reinterpret_cast<std::byte*>(object) + ivar_getOffset(place));
}

template <class State>
void define(const char* name, std::span<const MethodEntry> classMethods,
            std::span<const MethodEntry> methods) {
  Class root = classNamed("NSObject");
  if (root == nullptr || classNamed(name) != nullptr) return;
  Class cls = objc_allocateClassPair(root, name, 0);
  constexpr unsigned kAlignmentPower = 3;
  class_addIvar(cls, "state", sizeof(State), kAlignmentPower, "?");
  for (const MethodEntry& entry : methods)
    class_addMethod(cls, selectorNamed(entry.selector), entry.code, entry.types);
  for (const MethodEntry& entry : classMethods) {
    class_addMethod(object_getClass(reinterpret_cast<id>(cls)), selectorNamed(entry.selector),
                    entry.code, entry.types);
  }
  objc_registerClassPair(cls);
}

id newInstance(id cls) { return send(send(cls, "alloc"), "init"); }

// UIColor

using Components = std::array<double, 4>;

Components& componentsOf(id color) { return stateOf<Components>(color, "UIColor"); }

id colorWithComponents(id cls, SEL /*selector*/, double red, double green, double blue,
                       double alpha) {
  id color = newInstance(cls);
  componentsOf(color) = {red, green, blue, alpha};
  return autorelease(color);
}

id colorWithWhite(id cls, SEL selector, double white, double alpha) {
  return colorWithComponents(cls, selector, white, white, white, alpha);
}

BOOL getComponents(id self, SEL /*selector*/, double* red, double* green, double* blue,
                   double* alpha) {
  const auto targets = std::to_array({red, green, blue, alpha});
  for (std::size_t i = 0; i < targets.size(); ++i) {
    if (targets.at(i) != nullptr) *targets.at(i) = componentsOf(self).at(i);
  }
  return YES;
}

BOOL isEqualColor(id self, SEL /*selector*/, id other) {
  return static_cast<BOOL>(ObjCRuntime::isKindOf(other, "UIColor") &&
                           componentsOf(self) == componentsOf(other));
}

unsigned long hashOfColor(id self, SEL /*selector*/) {
  return static_cast<unsigned long>(componentsOf(self)[0] * 255) << 8U;
}

id descriptionOfColor(id self, SEL /*selector*/) {
  std::array<char, 160> text{};
  const Components& parts = componentsOf(self);
  (void)std::snprintf(text.data(), text.size(), "UIColor %g %g %g %g", parts[0], parts[1], parts[2],
                      parts[3]);
  return ObjCRuntime::makeString(text.data());
}

// UIImage

/// Both retained.
struct ImageState {
  id path;
  id data;
};

ImageState& stateOfImage(id image) { return stateOf<ImageState>(image, "UIImage"); }

id initWithFile(id self, SEL /*selector*/, id path) {
  id data = send(classNamed("NSData"), "dataWithContentsOfFile:", path);
  if (data == nullptr) {
    release(self);
    return nullptr;
  }
  stateOfImage(self) = {retain(path), retain(data)};
  return self;
}

id imageWithFile(id cls, SEL selector, id path) {
  return autorelease(initWithFile(newInstance(cls), selector, path));
}

id descriptionOfImage(id self, SEL /*selector*/) {
  const ImageState& state = stateOfImage(self);
  const auto bytes = send<unsigned long>(state.data, "length");
  return ObjCRuntime::makeString("UIImage " + ObjCRuntime::text(state.path).value_or("") + " of " +
                                 std::to_string(bytes) + " bytes");
}

void deallocImage(id self, SEL selector) {
  release(stateOfImage(self).path);
  release(stateOfImage(self).data);
  const auto inherited =
      reinterpret_cast<void (*)()>(class_getMethodImplementation(classNamed("NSObject"), selector));
  reinterpret_cast<void (*)(id, SEL)>(inherited)(self, selector);
}

}  // namespace

void defineStandInClasses() {
  const auto colorMakers = std::to_array<MethodEntry>({
      {"colorWithRed:green:blue:alpha:", code(colorWithComponents), "@48@0:8d16d24d32d40"},
      {"colorWithWhite:alpha:", code(colorWithWhite), "@32@0:8d16d24"},
  });
  const auto colorMethods = std::to_array<MethodEntry>({
      {"getRed:green:blue:alpha:", code(getComponents), "C48@0:8^d16^d24^d32^d40"},
      {"isEqual:", code(isEqualColor), "C24@0:8@16"},
      {"hash", code(hashOfColor), "Q16@0:8"},
      {"description", code(descriptionOfColor), "@16@0:8"},
  });
  const auto imageMakers = std::to_array<MethodEntry>({
      {"imageWithContentsOfFile:", code(imageWithFile), "@24@0:8@16"},
  });
  const auto imageMethods = std::to_array<MethodEntry>({
      {"initWithContentsOfFile:", code(initWithFile), "@24@0:8@16"},
      {"description", code(descriptionOfImage), "@16@0:8"},
      {"dealloc", code(deallocImage), "v16@0:8"},
  });
  define<Components>("UIColor", colorMakers, colorMethods);
  define<ImageState>("UIImage", imageMakers, imageMethods);
}

}  // namespace tavlen::loader
