#include "tavlen/introspection/classes/ObjCClass.h"

#include <algorithm>

namespace tavlen {

namespace {

/// Whether the image at `path` is part of the system.
bool isVendored(std::string_view path) {
  return path.starts_with("/System/") || path.starts_with("/usr/lib/");
}

}  // namespace

std::vector<std::pair<std::shared_ptr<ObjCMethod>, MethodIdentity>> ObjCClass::methodIdentities()
    const {
  std::vector<std::pair<std::shared_ptr<ObjCMethod>, MethodIdentity>> identities;
  identities.reserve(methods.size());
  for (const auto& method : methods) {
    identities.emplace_back(
        method, MethodIdentity{name.str(), method->selector.str(), method->isClassMethod});
  }
  return identities;
}

std::shared_ptr<ObjCMethod> ObjCClass::methodNamed(std::string_view selector,
                                                   bool isClassMethod) const {
  const auto found = std::find_if(methods.begin(), methods.end(), [&](const auto& method) {
    return method->isClassMethod == isClassMethod && method->selector == selector;
  });
  return found != methods.end() ? *found : nullptr;
}

StyledText ObjCClass::description(const StyledText::Color& foregroundColor,
                                  const StyledText::Color& vendoredTypeColor,
                                  const StyledText::Color& customTypeColor,
                                  const StyledText::Font& font) const {
  StyledText text;
  text.append(name, customTypeColor);
  if (supercls) {
    const bool isCustom = superclassPath && !isVendored(*superclassPath);
    text.append(" : ", foregroundColor);
    text.append(*supercls, isCustom ? customTypeColor : vendoredTypeColor);
  }
  for (std::size_t i = 0; i < protocols.size(); ++i) {
    text.append(i == 0 ? " <" : ", ", foregroundColor);
    text.append(protocols[i], vendoredTypeColor);
  }
  if (!protocols.empty()) text.append(">", foregroundColor);
  text.setFont(font);
  return text;
}

std::string ObjCClass::description() const { return description({}, {}, {}, {}).plain(); }

std::string ObjCClass::debugDescription() const {
  std::string text = description();
  for (const auto& method : methods) text.append("\n").append(method->description());
  return text;
}

}  // namespace tavlen
