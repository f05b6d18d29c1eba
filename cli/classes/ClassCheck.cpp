#include "cli/classes/ClassCheck.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "tavlen/foundation/objc/MethodTypes.h"
#include "tavlen/foundation/text/Suggestion.h"

namespace tavlen::cli {

namespace {

using Part = HookPlace::Part;

/// What the dump has of one class, with its categories. The first method of a name counts.
struct KnownClass {
  std::optional<std::string_view> superclass;
  std::unordered_map<std::string, const ObjCMethod*> methods;  ///< by "-selector"
};

std::string methodKey(bool isClassMethod, std::string_view selector) {
  return (isClassMethod ? "+" : "-") + std::string(selector);
}

/// Whether two encodings have the same types, whatever their offsets.
bool haveSameTypes(std::string_view one, std::string_view other) {
  const auto left = splitMethodTypes(one);
  const auto right = splitMethodTypes(other);
  if (!left || !right) return one == other;
  return left->result == right->result && left->arguments == right->arguments;
}

class Checker {
 public:
  explicit Checker(const ClassDump& dump) {
    for (const ImageDump& image : dump.images) {
      for (const auto& cls : image.classes) {
        KnownClass& known = classes_[cls->name];
        if (cls->supercls) known.superclass = *cls->supercls;
        add(known, cls->methods);
      }
      for (const auto& category : image.categories)
        add(classes_[category.className], category.methods);
    }
  }

  std::vector<TweakProblem> run(const TweakFile::Manifest& manifest) {
    for (std::size_t i = 0; i < manifest._hooks.size(); ++i) {
      if (manifest._hooks[i]) check(*manifest._hooks[i], i);
    }
    return std::move(problems_);
  }

 private:
  static void add(KnownClass& known, const ObjCClass::Methods& methods) {
    for (const auto& method : methods)
      known.methods.try_emplace(methodKey(method->isClassMethod, method->selector), method.get());
  }

  void check(const Hook& hook, std::size_t index) {
    const auto place = classes_.find(hook.className);
    if (place == classes_.end()) {
      return add(index, Part::className, "unknown-class",
                 "the app defines no class \"" + hook.className + "\"" +
                     suggestion(hook.className, classes_));
    }
    const ObjCMethod* method = find(place->second, methodKey(hook.isClassMethod, hook.selector));
    if (method == nullptr) {
      return add(
          index, Part::selector, "unknown-method",
          "the app defines no method " + methodText(hook.identity()) +
              suggestion(methodKey(hook.isClassMethod, hook.selector), place->second.methods));
    }
    if (!haveSameTypes(hook.signature, method->encoding)) {
      add(index, Part::signature, "different-types",
          "\"" + hook.signature + "\" differs from the method's types in the app, \"" +
              method->encoding.str() + "\"");
    }
  }

  /// The method of the class, or of the nearest superclass that has it.
  const ObjCMethod* find(const KnownClass& cls, const std::string& key) const {
    constexpr int kMostSuperclasses = 1000;  // a damaged image may have a cycle
    const KnownClass* current = &cls;
    for (int i = 0; i < kMostSuperclasses; ++i) {
      const auto method = current->methods.find(key);
      if (method != current->methods.end()) return method->second;
      if (!current->superclass) return nullptr;
      const auto next = classes_.find(*current->superclass);
      if (next == classes_.end()) return nullptr;
      current = &next->second;
    }
    return nullptr;
  }

  /// "; did you mean "..."?" with the nearest key of `names`. Comparing many names with many takes
  /// long, so that only the first hooks get it.
  template <class Names>
  std::string suggestion(std::string_view name, const Names& names) {
    constexpr int kMost = 100;
    if (++suggestions_ > kMost) return {};
    std::vector<std::string_view> known;
    known.reserve(names.size());
    for (const auto& entry : names) known.push_back(entry.first);
    std::sort(known.begin(), known.end());
    const auto closest = closestName(name, known);
    return closest ? "; did you mean \"" + std::string(*closest) + "\"?" : std::string();
  }

  void add(std::size_t index, Part part, std::string_view code, std::string text) {
    problems_.push_back({.subject = TweakProblem::Subject::hook,
                         .index = index,
                         .place = {part},
                         .code = code,
                         .text = std::move(text)});
  }

  std::unordered_map<std::string_view, KnownClass> classes_;  ///< by name
  std::vector<TweakProblem> problems_;
  int suggestions_ = 0;
};

}  // namespace

std::vector<TweakProblem> classProblemsOf(const TweakFile::Manifest& manifest,
                                          const ClassDump& dump) {
  return Checker(dump).run(manifest);
}

}  // namespace tavlen::cli
