#pragma once

#include <optional>
#include <string>

#include "tavlen/foundation/text/TextLines.h"

namespace tavlen::loader {

class Engine;

/// Code that is named when it computes for too long: a hook's, or what a tweak runs outside of
/// hooks. Lives as long as the process.
struct WatchedCode {
  const Engine& engine;
  std::string method;                 ///< "-[Class selector]"; empty outside of hooks
  std::optional<TextPosition> place;  ///< in the source
};

}  // namespace tavlen::loader
