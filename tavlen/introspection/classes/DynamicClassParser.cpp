#include "tavlen/introspection/classes/DynamicClassParser.h"

#include <objc/runtime.h>

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

#include "tavlen/bundles/Executable.h"
#include "tavlen/foundation/objc/ObjCImages.h"
#include "tavlen/foundation/tasks/ScopedProgress.h"
#include "tavlen/foundation/text/Log.h"
#include "tavlen/foundation/text/Unicode.h"
#include "tavlen/introspection/classes/RuntimeClasses.h"

namespace tavlen {

namespace {

std::optional<SharedText> superclassName(Class superclass, SharedTextPool& texts) {
  if (superclass == nullptr) return std::nullopt;
  return texts.shared(wellFormedUTF8(class_getName(superclass)));
}

std::optional<SharedText> superclassPath(Class superclass, SharedTextPool& texts) {
  if (superclass == nullptr) return std::nullopt;
  const std::optional<std::string> path = ObjCRuntime::imagePath(superclass);
  if (!path) return std::nullopt;
  return texts.shared(wellFormedUTF8(*path));
}

std::vector<SharedText> protocolNames(Class cls, SharedTextPool& texts) {
  std::vector<SharedText> names;
  for (const std::string& name : class_copyProtocolNames(cls).value_or(std::vector<std::string>()))
    names.push_back(texts.shared(name));
  return names;
}

}  // namespace

const DynamicClassParser& DynamicClassParser::sharedParser() {
  // Never destroyed: the thread of an initialiser may use it while the process ends.
  static const DynamicClassParser& parser = *new DynamicClassParser;
  return parser;
}

DynamicClassParser::Cache DynamicClassParser::cache() const {
  const std::lock_guard lock(lock_);
  return cache_;
}

ObjCClass::Methods DynamicClassParser::methodsOfClass(objc_class* cls, bool instance) const {
  SharedTextPool texts;
  return methodsOfClass(cls, instance, texts);
}

ObjCClass::Methods DynamicClassParser::methodsOfClass(objc_class* cls, bool instance,
                                                      SharedTextPool& texts) {
  ObjCClass::Methods methods;
  class_enumerateMethods(cls, instance, [&](Method method) {
    const char* encoding = method_getTypeEncoding(method);
    const char* selector = sel_getName(method_getName(method));
    if (encoding == nullptr || selector == nullptr) return;
    methods.push_back(std::make_shared<ObjCMethod>(
        texts.shared(wellFormedUTF8(selector)), texts.shared(wellFormedUTF8(encoding)), !instance));
  });
  return methods;
}

std::shared_ptr<ObjCClass> DynamicClassParser::parseClass(objc_class* cls) const {
  SharedTextPool texts;
  return parseClass(cls, texts);
}

std::shared_ptr<ObjCClass> DynamicClassParser::parseClass(objc_class* cls,
                                                          SharedTextPool& texts) const {
  const std::lock_guard lock(lock_);
  const std::string name = class_getName(cls);
  if (const auto known = cache_.find(name); known != cache_.end()) return known->second;
  ObjCClass::Methods methods = methodsOfClass(cls, true, texts);
  ObjCClass::Methods ofClass = methodsOfClass(cls, false, texts);
  methods.reserve(methods.size() + ofClass.size());
  std::move(ofClass.begin(), ofClass.end(), std::back_inserter(methods));
  Class superclass = class_getSuperclass(cls);
  auto record =
      std::make_shared<ObjCClass>(texts.shared(wellFormedUTF8(name)), std::move(methods),
                                  std::nullopt, superclassName(superclass, texts),
                                  superclassPath(superclass, texts), protocolNames(cls, texts));
  return cache_.emplace(name, std::move(record)).first->second;
}

bool DynamicClassParser::load(const std::filesystem::path& path) {
  logMessage("dlopening " + path.string() + "!");
  const auto error = ObjCRuntime::loadImage(path);
  if (error) logMessage("dlopen encountered error: " + *error);
  return !error;
}

bool DynamicClassParser::visitClasses(const std::filesystem::path& path, bool shouldDlopen,
                                      FunctionRef<void(objc_class* cls)> visit) const {
  if (shouldDlopen && !load(path)) return false;
  const ScopedProgress current(Progress::make(1), 1);
  logMessage("Enumerating classes of " + path.string());
  objc_enumerateClassesOfImage(path, visit);
  return true;
}

std::optional<DynamicClassParser::Classes> DynamicClassParser::parseClassesAtPath(
    const std::filesystem::path& path, bool shouldDlopen) const {
  const std::lock_guard lock(lock_);
  Classes classes;
  SharedTextPool texts;
  const bool isLoaded = visitClasses(
      path, shouldDlopen, [&](objc_class* cls) { classes.push_back(parseClass(cls, texts)); });
  return isLoaded ? std::optional(std::move(classes)) : std::nullopt;
}

void DynamicClassParser::visitBelow(const std::shared_ptr<Progress>& parent,
                                    const Executable& executable,
                                    FunctionRef<void(objc_class* cls)> visit) const {
  if (!executable.parseDynamically() && !load(executable.path())) throw Error::failed();
  // Only after loading: an initialiser that the load runs may parse as well and would take the
  // unit.
  std::optional<ScopedProgress> current;
  if (parent != nullptr) current.emplace(parent, 1);
  visitClasses(executable.path(), false, visit);
}

ClassParser::Classes DynamicClassParser::parseBelow(const std::shared_ptr<Progress>& parent,
                                                    const Executable& executable) const {
  const std::lock_guard lock(lock_);
  Classes classes;
  SharedTextPool texts;
  visitBelow(parent, executable,
             [&](objc_class* cls) { classes.push_back(parseClass(cls, texts)); });
  return classes;
}

std::shared_ptr<ObjCClass> DynamicClassParser::parseNamedBelow(
    const std::shared_ptr<Progress>& parent, const Executable& executable,
    std::string_view name) const {
  const std::lock_guard lock(lock_);
  std::shared_ptr<ObjCClass> found;
  visitBelow(parent, executable, [&](objc_class* cls) {
    if (found == nullptr && wellFormedUTF8(class_getName(cls)) == name) found = parseClass(cls);
  });
  return found;
}

DynamicClassParser::Error DynamicClassParser::Error::failed() {
  return {Case::failed, {"dynamic_class_parser.error.failed", "Dynamic dump failed"}};
}

}  // namespace tavlen
