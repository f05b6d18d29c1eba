#include "cli/work/HookOutput.h"

#include "cli/terminal/Diagnostic.h"
#include "tavlen/tweaks/HookCheck.h"

namespace tavlen::cli {

HookRow rowOf(const Hook& hook) {
  return {methodText(hook.identity()),
          hook.className,
          hook.selector,
          hook.signature,
          hook.customName,
          hook._args};
}

void warnOfProblems(const std::string& tweak, const Hook& hook,
                    std::optional<std::int64_t> argument) {
  for (const HookProblem& problem : problemsOf(hook)) {
    if (argument && problem.argument != argument) continue;
    print({.severity = Diagnostic::kWarning,
           .message = problem.text,
           .file = tweak,
           .place = methodText(hook.identity()) + ": " + documentPath(hook, problem)});
  }
}

}  // namespace tavlen::cli
