#include "tavlen/tweaks/Hook.h"

#include <utility>

#include "tavlen/introspection/classes/ObjCClass.h"

namespace tavlen {

Hook Hook::with(std::string className, std::string selector, std::string signature,
                bool isClassMethod, std::map<std::int64_t, Parameter> args) {
  Hook hook;
  hook.className = std::move(className);
  hook.selector = std::move(selector);
  hook.signature = std::move(signature);
  hook.isClassMethod = isClassMethod;
  hook.setArgs(std::move(args));
  return hook;
}

Hook Hook::with(const ObjCClass& cls, const ObjCMethod& method,
                std::map<std::int64_t, Parameter> args) {
  return with(cls.name.str(), method.selector.str(), method.encoding.str(), method.isClassMethod,
              std::move(args));
}

std::shared_ptr<ObjCMethod> Hook::method() const {
  return std::make_shared<ObjCMethod>(selector, signature, isClassMethod);
}

std::map<std::int64_t, Parameter> Hook::args() const {
  std::map<std::int64_t, Parameter> result;
  for (const auto& [index, box] : _args) result.emplace_hint(result.end(), index, box.value);
  return result;
}

void Hook::setArgs(std::map<std::int64_t, Parameter> args) {
  _args.clear();
  for (auto& entry : args) {
    _args.emplace_hint(_args.end(), entry.first, ParameterContainer{std::move(entry.second)});
  }
}

std::string Hook::transpilerKey() const {
  std::string key;
  appendTranspilerKey(key);
  return key;
}

void Hook::appendTranspilerKey(std::string& out) const {
  out.append(signature).append(prefix()).append(selector);
}

}  // namespace tavlen
