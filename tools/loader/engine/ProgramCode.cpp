#include "tools/loader/engine/ProgramCode.h"

#include <cxxabi.h>

#include <exception>

#include "tools/loader/engine/HookStack.h"

namespace tavlen::loader {

void runProgram(FunctionRef<void()> body) {
  const HookStack::Outside outside;
  id raised = nullptr;
  try {
    raised = guarded(body);
#ifdef __GLIBCXX__
  } catch (const abi::__forced_unwind&) {
    throw;  // the end of the thread, which unwinds it with this library alone
#endif
  } catch (...) {
    throw ProgramException(Raised(std::current_exception()));
  }
  if (raised != nullptr) throw ProgramException(Raised::adopting(raised));
}

}  // namespace tavlen::loader
