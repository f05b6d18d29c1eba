#pragma once

#include <chrono>
#include <filesystem>
#include <optional>

namespace tavlen::loader {

/// What the command asked for, in variables of the environment.
struct StartSettings {
  std::filesystem::path tweak;  ///< the folder of its package
  int events;                   ///< the socket for events
  bool isTracing;
  std::chrono::milliseconds limit;  ///< after which a script is reported as slow

  /// Those of this program; nothing if it is not the one that is tried. The first call removes the
  /// variables, so that programs which this one starts have none of them, and the loader from
  /// LD_PRELOAD. It must come before another library copies the environment. Swallows errors.
  static const std::optional<StartSettings>& get();
};

}  // namespace tavlen::loader
