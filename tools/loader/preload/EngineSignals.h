#pragma once

#include <string>
#include <vector>

namespace tavlen::loader {

/// Makes the engine leave the program's signals alone (RAII). It would take SIGSEGV and SIGBUS for
/// traps of its own and SIGUSR1 to suspend threads. Exists while the first context is made, which
/// reads the settings; before the program has threads. What the user has set for the engine stays.
class EngineSignals {
 public:
  EngineSignals();
  EngineSignals(const EngineSignals&) = delete;
  EngineSignals& operator=(const EngineSignals&) = delete;
  ~EngineSignals();

 private:
  std::vector<const char*> variables_;  ///< those that it has set
};

}  // namespace tavlen::loader
