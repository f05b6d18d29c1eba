#include "tavlen/tweaks/HookSource.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>
#include <unordered_map>

#include "tavlen/foundation/json/JSONEncoder.h"

namespace tavlen {

namespace {

void appendIndex(std::string& out, std::int64_t index) {
  std::array<char, 20> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), index).ptr;
  out.append(digits.data(), end);
}

/// Appends the function of `hook`. Calls `tell` with each value's index, and the place of its
/// expression in `out`.
template <class Tell>
void appendFunction(std::string& out, const Hook& hook, const Tell& tell) {
  const auto appendValue = [&](std::int64_t index, const Parameter& value) {
    const std::size_t begin = out.size();
    appendOBJSValue(out, value);
    tell(HookValueText{index, begin, out.size()});
  };
  out += "function() {\n";
  const ParameterContainer* result = nullptr;
  for (const auto& [index, argument] : hook._args) {
    if (index == Hook::kReturnValue) {
      result = &argument;
      continue;
    }
    out += "\t\targuments[";
    appendIndex(out, index);
    out += "] = ";
    appendValue(index, argument.value);
    out += ";\n";
  }
  if (result != nullptr) {
    out += "\t\t%orig;\n\t\treturn ";
    appendValue(Hook::kReturnValue, result->value);
    out += ";\n";
  } else {
    out += "\t\treturn %orig;\n";
  }
  out += "\t}";
}

constexpr auto kTellNothing = [](const HookValueText&) {};

/// Appends the member for `hook`. `key` is scratch space, which callers reuse to save allocations.
template <class Tell = decltype(kTellNothing)>
void appendKeyedFunction(std::string& out, const Hook& hook, std::string& key,
                         const Tell& tell = kTellNothing) {
  key.clear();
  hook.appendTranspilerKey(key);
  out += '\t';
  appendJSONString(out, key);
  out += ": ";
  appendFunction(out, hook, tell);
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
  source.text.reserve(estimatedLength(hooks));
  std::string key;
  for (const ClassHooks& group : groupedByClass(hooks)) {
    if (!source.text.empty()) source.text += "\n\n";
    source.text += "hookClass(";
    appendJSONString(source.text, group.className);
    source.text += ", {}, {";
    for (const std::size_t hook : group.hooks) {
      source.text += '\n';
      const std::size_t begin = source.text.size();
      appendKeyedFunction(source.text, hooks[hook], key);
      source.entries.push_back({hook, begin, source.text.size()});
    }
    source.text += "\n});";
  }
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

std::vector<HookValueText> hookValueTexts(const Hook& hook) {
  std::vector<HookValueText> values;
  std::string out;
  std::string key;
  appendKeyedFunction(out, hook, key, [&](const HookValueText& value) { values.push_back(value); });
  return values;
}

std::string objsFunc(const Hook& hook) {
  std::string out;
  appendFunction(out, hook, kTellNothing);
  return out;
}

std::string keyedOBJSFunc(const Hook& hook) {
  std::string out;
  std::string key;
  appendKeyedFunction(out, hook, key);
  return out;
}

}  // namespace tavlen
