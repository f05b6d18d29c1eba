#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/tweaks/Hook.h"

namespace tavlen {

/// The source text generated for a list of hooks: one `hookClass` block for each class, with one
/// function for each hook.
struct TAVLEN_API HookSource {
  /// The position of one hook's function in the text.
  struct Entry {
    std::size_t hook;   ///< the hook's index in the list
    std::size_t begin;  ///< the first byte of the function, as an offset in the text
    std::size_t end;    ///< one past its last byte
  };

  /// The source, in UTF-8.
  std::string text;
  /// In the order of the text.
  std::vector<Entry> entries;
};

/// Renders `hooks`. Classes are ordered by the bytes of their names, the hooks of a class as in the
/// list, and arguments by index. Throws EncodingError for the first hook of the list with a value
/// that has no expression, or with a name that is not UTF-8.
TAVLEN_API HookSource generateHookSource(std::span<const Hook> hooks);

/// A replacement value in the text of keyedOBJSFunc().
struct TAVLEN_API HookValueText {
  std::int64_t argument;  ///< the index of the argument, or Hook::kReturnValue
  std::size_t begin;      ///< the first byte of its expression, as an offset in the text
  std::size_t end;        ///< one past its last byte
};

/// The values of `hook` in the order of the text. Throws as generateHookSource() does.
TAVLEN_API std::vector<HookValueText> hookValueTexts(const Hook& hook);

/// The function that replaces the method of `hook`. Throws as generateHookSource() does.
TAVLEN_API std::string objsFunc(const Hook& hook);

/// The member of a `hookClass` block for `hook`: its key and its function. Throws as
/// generateHookSource() does.
TAVLEN_API std::string keyedOBJSFunc(const Hook& hook);

}  // namespace tavlen
