#include "cli/tweaks/HookOutput.h"

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
    const bool isOfArgument =
        problem.place.part == HookPlace::Part::value && problem.place.argument == argument;
    if (argument && !isOfArgument) continue;
    const std::string path = documentPath(hook, problem.place);
    print({.severity = Diagnostic::kWarning,
           .message = problem.text,
           .file = tweak,
           .place = methodText(hook.identity()) + (path.empty() ? "" : ": " + path),
           .code = std::string(problem.code)});
  }
}

}  // namespace tavlen::cli
