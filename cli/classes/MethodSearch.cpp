#include "cli/classes/MethodSearch.h"

#include <algorithm>
#include <span>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/foundation/text/Suggestion.h"

namespace tavlen::cli {

namespace {

using Methods = ObjCClass::Methods;

/// A method's selector and kind.
struct MethodKey {
  explicit MethodKey(const ObjCMethod& method)
      : selector(method.selector), isClassMethod(method.isClassMethod) {}
  bool operator==(const MethodKey&) const = default;

  std::string_view selector;
  bool isClassMethod;
};

struct KeyHash {
  std::size_t operator()(const MethodKey& key) const {
    return 2 * std::hash<std::string_view>()(key.selector) +
           static_cast<std::size_t>(key.isClassMethod);
  }
};

using MethodKeys = std::unordered_set<MethodKey, KeyHash>;

/// A record of a class, or a category of one.
struct Owner {
  const Methods* methods;
  const ObjCClass* cls;  ///< null for a category
  bool isChosen;
};

class Search {
 public:
  Search(const ClassDump& dump, const MethodQuery& query) : query_(query) {
    for (const ImageDump& image : dump.images) {
      for (const auto& cls : image.classes) add(cls->name, {&cls->methods, cls.get(), false});
      for (const auto& category : image.categories) {
        add(category.className, {&category.methods, nullptr, false});
      }
    }
    if (!query.withInherited) return;
    for (const auto& [name, owners] : owners_) {
      if (owners.front().isChosen) includeInherited(owners);
    }
  }

  /// Those of the owner's methods that are looked for.
  Methods found(std::string_view className, const Methods& methods) const {
    const bool isChosen = owners_.at(className).front().isChosen;
    Methods found;
    MethodKeys seen;
    for (const auto& method : methods) {
      if ((isChosen || inherited_.contains(method.get())) &&
          query_.selectors.matches(method->selector) && seen.insert(MethodKey(*method)).second) {
        found.push_back(method);
      }
    }
    return found;
  }

 private:
  using Owners = std::vector<Owner>;

  void add(std::string_view className, Owner owner) {
    Owners& owners = owners_[className];
    owner.isChosen = !owners.empty()    ? owners.front().isChosen
                     : query_.className ? className == *query_.className
                                        : query_.classes.matches(className);
    owners.push_back(owner);
  }

  const Owners* superclassOf(const Owners& owners) const {
    for (const Owner& owner : owners) {
      if (owner.cls == nullptr || !owner.cls->supercls) continue;
      const auto place = owners_.find(*owner.cls->supercls);
      return place == owners_.end() ? nullptr : &place->second;
    }
    return nullptr;
  }

  /// Includes what a chosen class inherits, up to the next chosen class, which is searched itself.
  void includeInherited(const Owners& chosen) {
    constexpr int kMostSuperclasses = 1000;  // a damaged image may have a cycle
    MethodKeys overridden;
    const Owners* below = &chosen;
    for (int i = 0; i < kMostSuperclasses; ++i) {
      const Owners* const owners = superclassOf(*below);
      if (owners == nullptr || owners->front().isChosen) return;
      for (const Owner& owner : *below) {
        for (const auto& method : *owner.methods) overridden.insert(MethodKey(*method));
      }
      for (const Owner& owner : *owners) {
        for (const auto& method : *owner.methods) {
          if (!overridden.contains(MethodKey(*method))) inherited_.insert(method.get());
        }
      }
      below = owners;
    }
  }

  const MethodQuery& query_;
  std::unordered_map<std::string_view, Owners> owners_;  ///< by the class's name
  std::unordered_set<const ObjCMethod*> inherited_;
};

/// Calls `visit` with the class's name and the methods of each class and each category.
void forEachOwner(const ClassDump& dump,
                  FunctionRef<void(std::string_view className, const Methods&)> visit) {
  for (const ImageDump& image : dump.images) {
    for (const auto& cls : image.classes) visit(cls->name, cls->methods);
    for (const auto& category : image.categories) visit(category.className, category.methods);
  }
}

/// "; did you mean ...?", or nothing if no name is similar.
std::string similarText(std::string_view name, std::span<const std::string_view> known) {
  const auto closest = closestName(name, known);
  return closest ? "; did you mean \"" + std::string(*closest) + "\"?" : "";
}

}  // namespace

ClassDump methodsFound(const ClassDump& dump, const MethodQuery& query) {
  const Search search(dump, query);
  ClassDump found = dump;
  for (ImageDump& image : found.images) {
    for (auto& cls : image.classes) {
      cls = std::make_shared<ObjCClass>(*cls);
      cls->methods = search.found(cls->name, cls->methods);
    }
    for (auto& category : image.categories) {
      category.methods = search.found(category.className, category.methods);
    }
    std::erase_if(image.classes, [](const auto& cls) { return cls->methods.empty(); });
    std::erase_if(image.categories, [](const auto& category) { return category.methods.empty(); });
  }
  return found;
}

bool hasClass(const ClassDump& dump, const std::string& name) {
  bool isFound = false;
  forEachOwner(dump, [&](std::string_view className, const Methods& /*methods*/) {
    isFound = isFound || className == name;
  });
  return isFound;
}

std::shared_ptr<ObjCMethod> ownMethod(const ClassDump& dump, const MethodIdentity& identity) {
  std::shared_ptr<ObjCMethod> found;
  forEachOwner(dump, [&](std::string_view className, const Methods& methods) {
    if (found || className != identity.className) return;
    const auto place = std::find_if(methods.begin(), methods.end(), [&](const auto& method) {
      return method->selector == identity.selector &&
             method->isClassMethod == identity.isClassMethod;
    });
    if (place != methods.end()) found = *place;
  });
  return found;
}

std::string missingMethodText(const ClassDump& dump, const MethodIdentity& identity) {
  if (!hasClass(dump, identity.className)) return missingClassText(dump, identity.className);
  std::vector<std::string> texts;
  forEachOwner(dump, [&](std::string_view className, const Methods& methods) {
    if (className != identity.className) return;
    for (const auto& method : methods) {
      texts.push_back(
          methodText({std::string(className), method->selector.str(), method->isClassMethod}));
    }
  });
  const std::vector<std::string_view> known(texts.begin(), texts.end());
  return identity.className + " has no method " + methodText(identity) + " of its own" +
         similarText(methodText(identity), known);
}

std::string missingClassText(const ClassDump& dump, const std::string& name) {
  std::vector<std::string_view> known;
  forEachOwner(dump, [&](std::string_view className, const Methods& /*methods*/) {
    known.push_back(className);
  });
  return "defines no class " + name + similarText(name, known);
}

}  // namespace tavlen::cli
