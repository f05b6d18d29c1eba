#include <cstdint>

#include "tavlen/editing/HookManager.h"
#include "tavlen/editing/RootParameterManager.h"
#include "tavlen/items/TweaksDirectory.h"
#include "tavlen/tweaks/Hook.h"
#include "tavlen/tweaks/TweakFile.h"
#include "tests/faults/Operation.h"
#include "tests/faults/SampleStore.h"

namespace tavlen::faults {

namespace {

HookManager managerFor(const char* selector) {
  return TweakFile::at(TweaksDirectory::url() / kFirstTweak)->managerFor({"A", selector, false});
}

}  // namespace

std::vector<Operation> hookOperations() {
  return {
      {"HookAddition",
       [] { managerFor("other").setHook(Hook::with("A", "other", "v16@0:8", false, {})); }},
      {"HookDeletion", [] { managerFor("number").deleteHook(); }},
      {"ParameterEdit",
       [] {
         const RootParameterManager manager(managerFor("number"), Hook::kReturnValue);
         manager.setParameter(ValueParameter<std::int64_t>{8});
       }},
  };
}

}  // namespace tavlen::faults
