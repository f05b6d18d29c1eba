#pragma once

#include <map>
#include <set>
#include <vector>

#include "tests/support/TemporaryFolder.h"

namespace tavlen::faults {

/// All that lies in a folder, by relative path: each entry's kind, mode and contents. What listing
/// ignores, as its name begins with ".", is left out.
using Tree = std::map<std::string, std::string>;

/// What an archive is compared by, instead of its bytes, which hold times.
using ArchiveReader = std::function<Tree(const fs::path& archive)>;

Tree readTree(const fs::path& folder, const ArchiveReader& readArchive = {});

/// The stored items that are in `tree` and not in `old`; paths are below the store.
std::set<std::string> newItems(const Tree& tree, const Tree& old, const std::string& store);

/// `tree` with the new items' identifiers, which are random, replaced in names and contents by
/// others that go by the items' contents.
Tree withPlainIdentifiers(const Tree& tree, const Tree& old, const std::string& store);

std::string difference(const Tree& expected, const Tree& found);

/// The sample's items: two tweaks, and a collection of both.
inline const std::string kFirstTweak = "11111111-1111-4111-8111-111111111111";
inline const std::string kSecondTweak = "22222222-2222-4222-8222-222222222222";
inline const std::string kCollection = "33333333-3333-4333-8333-333333333333.collection";

/// A small store below a device root of its own, which it makes the shared one, and which comes
/// back as it was prepared for every run.
class SampleStore {
 public:
  /// `prepare` adds to it, where it is set.
  explicit SampleStore(const std::function<void()>& prepare);

  const fs::path& root() const { return root_; }
  void reset() const;

 private:
  TemporaryFolder folder_{memoryFolder()};
  fs::path root_;
  fs::path copy_;
};

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
  std::function<void()> run;
  std::function<void()> prepare = {};
  Leftover leftover = Leftover::nothing;
  /// Whether it has to work when system calls are interrupted. Other libraries need not try again.
  bool survivesInterrupts = true;
  /// Whether what cannot be read is left out, as documented, and the operation succeeds.
  bool leavesOut = false;
  /// Whether all that it saves is on the disk before it has its name. Only then is the order of the
  /// calls checked.
  bool syncs = true;
  ArchiveReader readArchive = {};
};

inline std::ostream& operator<<(std::ostream& out, const Operation& operation) {
  return out << operation.name;
}

/// All, one function a source. Who adds an operation that saves adds it there.
std::vector<Operation> storeOperations();
std::vector<Operation> installOperations();

}  // namespace tavlen::faults
