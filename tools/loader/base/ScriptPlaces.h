#pragma once

#include <cstddef>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include <JavaScriptCore/JavaScript.h>

#include "tavlen/foundation/text/TextLines.h"
#include "tavlen/tweaks/SourceMap.h"

namespace tavlen::loader {

/// Leads from errors of the engine to places in the source of the code. Threads: any.
class ScriptPlaces {
 public:
  /// The name of the code in call stacks.
  static constexpr const char* kCodeURL = "file:///code.js";

  /// Keeps copies of the code and of its source map, which may be malformed: it then leads nowhere.
  /// The map is decoded when it is first wanted.
  ScriptPlaces(std::string code, std::string map);

  /// The place in the source where `thrown` was made, if it is an error; nothing where that is
  /// unknown.
  std::optional<TextPosition> placeOf(JSContextRef context, JSValueRef thrown) const;

  /// Finds parts of the code in their order, with one walk over it. Threads: one at a time. The
  /// places must live as long.
  class Search {
   public:
    /// Begins at the first occurrence of `before`, or else of the code.
    Search(const ScriptPlaces& places, std::string_view before);

    /// The place in the source of the next occurrence of `part` after the last one that was found,
    /// or else of the first one.
    std::optional<TextPosition> next(std::string_view part);

   private:
    const ScriptPlaces& places_;
    std::size_t begin_;
    std::size_t at_;
    std::size_t lineBegin_ = 0;  ///< of the last one that was found
    std::size_t line_ = 1;
  };

  const std::string& code() const { return code_; }

 private:
  std::optional<TextPosition> sourceOf(TextPosition place) const;

  std::string code_;
  mutable std::once_flag isDecoded_;
  mutable std::string mapText_;  ///< until it is decoded
  mutable std::optional<SourceMap> map_;
};

}  // namespace tavlen::loader
