#pragma once

#include <chrono>

namespace tavlen::loader {

class Engine;

/// Starts a thread, which lives as long as the process. It names scripts that compute for longer
/// than `limit` without calling the program, and releases objects whose wrappers are gone
/// while no script computes.
void startWatch(Engine& engine, std::chrono::milliseconds limit);

}  // namespace tavlen::loader
