#pragma once

#include <vector>

#include "tests/faults/StoreTree.h"

namespace tavlen::faults {

/// What an operation that did not end may leave in the store, beside the old documents.
enum class Leftover {
  nothing,
  halfMadeItem,  ///< of a creation: each document in it is whole or missing
  noRecord,      ///< of an installation: no tweak is installed, and folders that nothing names
  movedMembers,  ///< of a collection's import: whole tweaks, and the collection
};

/// Something that saves. It works on the sample store, whose folder is the shared DeviceRoot, as it
/// stood before; see SampleStore.h.
struct Operation {
  std::string name;
  /// Throws where it fails.
  std::function<void()> run;
  /// Adds to the sample what this operation needs.
  std::function<void()> prepare = {};
  Leftover leftover = Leftover::nothing;
  /// Whether it has to work when system calls are interrupted. Other libraries need not try again.
  bool survivesInterrupts = true;
  /// Whether what cannot be read is left out, as documented, and the operation succeeds.
  bool leavesOut = false;
  /// Whether all that it saves is on the disk before it has its name. Only then is the order of the
  /// calls checked.
  bool syncs = true;
  /// How archives are compared.
  ArchiveReader readArchive = {};
};

/// As the name of a test shows it.
inline std::ostream& operator<<(std::ostream& out, const Operation& operation) {
  return out << operation.name;
}

/// All, one function a source. Who adds an operation that saves adds it there.
std::vector<Operation> storeOperations();
std::vector<Operation> installOperations();

}  // namespace tavlen::faults
