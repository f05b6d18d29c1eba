#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "tavlen/foundation/text/TextPosition.h"
#include "tavlen/tweaks/HookCheck.h"

namespace tavlen::cli {

/// Code among the values of a hook, and where it is in the hook's part of the generated text.
struct CodeValue {
  HookPlace place;
  std::string_view code;
  /// As an offset in keyedOBJSFunc(). Nothing for code within a collection whose text occurs there
  /// several times.
  std::optional<std::size_t> begin;

  /// The position in the code, as in a script, of the byte `offset` of keyedOBJSFunc(). The place
  /// after the code's end belongs to it. Returns nothing for a byte outside of it.
  std::optional<TextPosition> positionOf(std::size_t offset) const;
};

/// The code among the values of `hook`, which must outlive the result. Throws EncodingError as
/// generateHookSource() does.
std::vector<CodeValue> codeValuesOf(const Hook& hook);

}  // namespace tavlen::cli
