#include "tavlen/tweaks/HookSource.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

#include "tavlen/foundation/json/JSONEncoder.h"

namespace tavlen {

namespace {

void appendFunction(TextBuffer& out, const Hook& hook) {
  out += "function() {\n";
  const ParameterContainer* result = nullptr;
  for (const auto& [index, argument] : hook._args) {
    if (index == Hook::kReturnValue) {
      result = &argument;
      continue;
    }
    out += "\t\targuments[";
    appendJSON(out, index);
    out += "] = ";
    appendOBJSValue(out, argument.value);
    out += ";\n";
  }
  if (result != nullptr) {
    out += "\t\t%orig;\n\t\treturn ";
    appendOBJSValue(out, result->value);
    out += ";\n";
  } else {
    out += "\t\treturn %orig;\n";
  }
  out += "\t}";
}

/// Appends the member for `hook`. `key` is scratch space, which callers reuse to save allocations.
void appendKeyedFunction(TextBuffer& out, const Hook& hook, std::string& key) {
  key.clear();
  hook.appendTranspilerKey(key);
  out += '\t';
  appendJSON(out, key);
  out += ": ";
  appendFunction(out, hook);
  out += ',';
}

/// The hooks of one class, in the list's order.
struct ClassHooks {
  std::string_view className;
  std::vector<std::size_t> hooks;
};

std::vector<ClassHooks> groupedByClass(std::span<const Hook> hooks) {
  std::vector<ClassHooks> classes;
  std::unordered_map<std::string_view, std::size_t> places;
  ClassHooks* last = nullptr;
  for (std::size_t i = 0; i < hooks.size(); ++i) {
    // The hooks of a class are usually adjacent, which saves most of the look-ups.
    if (last == nullptr || last->className != hooks[i].className) {
      const auto [place, added] = places.try_emplace(hooks[i].className, classes.size());
      if (added) classes.push_back({hooks[i].className, {}});
      last = &classes[place->second];
    }
    last->hooks.push_back(i);
  }
  std::sort(classes.begin(), classes.end(),
            [](const ClassHooks& a, const ClassHooks& b) { return a.className < b.className; });
  return classes;
}

/// The approximate length of the source. Reserving it avoids most reallocations.
std::size_t estimatedLength(std::span<const Hook> hooks) {
  constexpr std::size_t kFrame = 60;     // a function's fixed text: key punctuation, `function`
  constexpr std::size_t kArgument = 80;  // an assignment of an expression of typical length
  std::size_t length = 0;
  for (const Hook& hook : hooks)
    length += kFrame + hook.signature.size() + hook.selector.size() + kArgument * hook._args.size();
  return length;
}

HookSource render(std::span<const Hook> hooks) {
  HookSource source;
  source.entries.reserve(hooks.size());
  TextBuffer out(source.text);
  out.reserve(estimatedLength(hooks));
  std::string key;
  for (const ClassHooks& group : groupedByClass(hooks)) {
    if (out.size() != 0) out += "\n\n";
    out += "hookClass(";
    appendJSON(out, group.className);
    out += ", {}, {";
    for (const std::size_t hook : group.hooks) {
      out += '\n';
      const std::size_t begin = out.size();
      appendKeyedFunction(out, hooks[hook], key);
      source.entries.push_back({hook, begin, out.size()});
    }
    out += "\n});";
  }
  out.commit();
  return source;
}

}  // namespace

HookSource generateHookSource(std::span<const Hook> hooks) {
  try {
    return render(hooks);
  } catch (const EncodingError&) {
    // The blocks are in class order, but the error to report is the one of the first hook in the
    // list, and hooks come before class names.
    for (const Hook& hook : hooks) keyedOBJSFunc(hook);
    throw;
  }
}

std::string objsFunc(const Hook& hook) {
  std::string text;
  TextBuffer out(text);
  appendFunction(out, hook);
  out.commit();
  return text;
}

std::string keyedOBJSFunc(const Hook& hook) {
  std::string text;
  std::string key;
  TextBuffer out(text);
  appendKeyedFunction(out, hook, key);
  out.commit();
  return text;
}

}  // namespace tavlen
