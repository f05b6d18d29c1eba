#include "tavlen/tweaks/HookSource.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

#include "tavlen/foundation/json/JSONEncoder.h"

namespace tavlen {

namespace {

/// Appends the function of `hook`. Calls `tell` with each value's index, and the place of its
/// expression in `out`.
template <class Tell>
void appendFunction(TextBuffer& out, const Hook& hook, const Tell& tell) {
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
    appendJSON(out, index);
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
void appendKeyedFunction(TextBuffer& out, const Hook& hook, std::string& key,
                         const Tell& tell = kTellNothing) {
  key.clear();
  hook.appendTranspilerKey(key);
  out += '\t';
  appendJSON(out, key);
  out += ": ";
  appendFunction(out, hook, tell);
  out += ',';
}

/// The indices of `hooks`: the classes by their names, the hooks of a class in the list's order.
std::vector<std::size_t> orderedByClass(std::span<const Hook> hooks) {
  struct Class {
    std::string_view name;
    std::size_t number = 0;  ///< in the list's order
    std::size_t hooks = 0;
  };
  std::vector<Class> classes;
  std::vector<std::size_t> classOf;  // the number of each hook's class
  classOf.reserve(hooks.size());
  std::unordered_map<std::string_view, std::size_t> numbers;
  for (const Hook& hook : hooks) {
    // The hooks of a class are usually adjacent, which saves most of the look-ups.
    std::size_t number = classOf.empty() ? 0 : classOf.back();
    if (classOf.empty() || classes[number].name != hook.className) {
      const auto [place, added] = numbers.try_emplace(hook.className, classes.size());
      number = place->second;
      if (added) classes.push_back({hook.className, number});
    }
    classOf.push_back(number);
    ++classes[number].hooks;
  }
  std::sort(classes.begin(), classes.end(),
            [](const Class& a, const Class& b) { return a.name < b.name; });
  std::vector<std::size_t> next(classes.size());  // the place of the next hook of each class
  std::size_t hooksBefore = 0;
  for (const Class& one : classes) {
    next[one.number] = hooksBefore;
    hooksBefore += one.hooks;
  }
  std::vector<std::size_t> order(hooks.size());
  for (std::size_t i = 0; i < hooks.size(); ++i) order[next[classOf[i]]++] = i;
  return order;
}

/// The approximate length of the source, by a sample of the hooks. Reserving it avoids most
/// reallocations. Limited, because one long name in the sample counts for many.
std::size_t estimatedLength(std::span<const Hook> hooks) {
  constexpr std::size_t kMost = std::size_t{16} << 20;
  constexpr std::size_t kSampled = 64;
  constexpr std::size_t kFrame = 60;     // a function's fixed text: key punctuation, `function`
  constexpr std::size_t kArgument = 80;  // an assignment of an expression of typical length
  std::size_t length = 0;
  const std::size_t step = hooks.size() / kSampled + 1;
  for (std::size_t i = 0; i < hooks.size(); i += step) {
    const Hook& hook = hooks[i];
    length += kFrame + hook.signature.size() + hook.selector.size() + kArgument * hook._args.size();
  }
  return length < kMost / step ? length * step : kMost;
}

/// Begins to load hooks that come soon: those of a large manifest are not in the caches, and nor is
/// a hook's first argument, whose place is only known once the hook has been loaded.
void prefetch(std::span<const Hook> hooks, std::span<const std::size_t> next) {
  constexpr std::size_t kAhead = 2;
  if (next.size() > 2 * kAhead) {
    const auto* bytes = reinterpret_cast<const char*>(&hooks[next[2 * kAhead]]);
    for (std::size_t line = 0; line < sizeof(Hook); line += 64) __builtin_prefetch(bytes + line);
  }
  if (next.size() <= kAhead) return;
  const auto& arguments = hooks[next[kAhead]]._args;
  if (!arguments.empty()) __builtin_prefetch(&*arguments.begin());
}

/// Appends the source of `hooks`.
void appendBlocks(TextBuffer& out, std::span<const Hook> hooks,
                  std::vector<HookSource::Entry>& entries) {
  entries.reserve(hooks.size());
  out.reserve(estimatedLength(hooks));
  std::string key;
  const std::vector<std::size_t> order = orderedByClass(hooks);
  const std::string* className = nullptr;
  for (std::size_t i = 0; i < order.size(); ++i) {
    prefetch(hooks, std::span(order).subspan(i));
    const Hook& hook = hooks[order[i]];
    if (className == nullptr || *className != hook.className) {
      if (className != nullptr) out += "\n});\n\n";
      className = &hook.className;
      out += "hookClass(";
      appendJSON(out, *className);
      out += ", {}, {";
    }
    out += '\n';
    const std::size_t begin = out.size();
    appendKeyedFunction(out, hook, key);
    entries.push_back({order[i], begin, out.size()});
  }
  if (className != nullptr) out += "\n});";
}

/// What `append` appends.
template <class Append>
std::string textOf(const Append& append) {
  std::string text;
  {
    TextBuffer out(text);
    append(out);
  }
  return text;
}

}  // namespace

HookSource generateHookSource(std::span<const Hook> hooks) {
  try {
    HookSource source;
    source.text = textOf([&](TextBuffer& out) { appendBlocks(out, hooks, source.entries); });
    return source;
  } catch (const EncodingError&) {
    // The blocks are in class order, but the error to report is the one of the first hook in the
    // list, and hooks come before class names.
    for (const Hook& hook : hooks) keyedOBJSFunc(hook);
    throw;
  }
}

std::vector<HookValueText> hookValueTexts(const Hook& hook) {
  std::vector<HookValueText> values;
  std::string text;
  TextBuffer out(text);
  std::string key;
  appendKeyedFunction(out, hook, key, [&](const HookValueText& value) { values.push_back(value); });
  return values;
}

std::string objsFunc(const Hook& hook) {
  return textOf([&](TextBuffer& out) { appendFunction(out, hook, kTellNothing); });
}

std::string keyedOBJSFunc(const Hook& hook) {
  std::string key;
  return textOf([&](TextBuffer& out) { appendKeyedFunction(out, hook, key); });
}

}  // namespace tavlen
