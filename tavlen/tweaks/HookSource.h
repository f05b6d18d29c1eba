#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "tavlen/tweaks/Hook.h"

namespace tavlen {

/// The hook source that a list of hooks becomes: a `hookClass` block a class, a function a hook.
struct HookSource {
  /// Where the function of one hook stands.
  struct Entry {
    std::size_t hook;   ///< its place in the list
    std::size_t begin;  ///< of its text, in bytes from the source's begin
    std::size_t end;
  };

  std::string text;
  /// In the order of the text.
  std::vector<Entry> entries;
};

/// Renders `hooks`. Classes are ordered by the bytes of their names, the hooks of a class as the
/// list has them, arguments by index. Throws EncodingError for the first hook of the list that has
/// a value without an expression, or a name that is not UTF-8.
HookSource generateHookSource(std::span<const Hook> hooks);

/// The function that replaces the method of `hook`. Errors as above.
std::string objsFunc(const Hook& hook);

/// The member of a `hookClass` block that `hook` becomes. Errors as above.
std::string keyedOBJSFunc(const Hook& hook);

}  // namespace tavlen
