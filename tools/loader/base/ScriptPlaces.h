#pragma once

#include <cstddef>
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
  ScriptPlaces(std::string code, std::string map);

  /// The place in the source where `thrown` was made, if it is an error; nothing where that is
  /// unknown.
  std::optional<TextPosition> placeOf(JSContextRef context, JSValueRef thrown) const;
  /// The place in the source of the first occurrence of `part` in the code after one of `before`,
  /// if there is one.
  std::optional<TextPosition> placeOf(std::string_view part, std::string_view before = {}) const;

  const std::string& code() const { return code_; }

 private:
  std::optional<TextPosition> sourceOf(TextPosition place) const;

  std::string code_;
  std::string mapText_;
};

}  // namespace tavlen::loader
