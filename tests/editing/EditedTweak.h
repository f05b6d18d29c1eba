#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "tavlen/foundation/tasks/NotificationCenter.h"
#include "tavlen/tweaks/Manifest.h"
#include "tests/support/TemporaryFolder.h"

namespace tavlen {

/// A stored tweak, and what is announced of it.
class EditedTweak {
 public:
  /// `hooks` are the elements of the manifest's list.
  explicit EditedTweak(const std::string& hooks);
  ~EditedTweak();
  EditedTweak(const EditedTweak&) = delete;
  EditedTweak& operator=(const EditedTweak&) = delete;

  const std::shared_ptr<TweakFile>& file() const { return file_; }
  /// The manifest's bytes.
  std::string stored() const;
  /// The manifest's list of hooks, as it is stored.
  std::string storedHooks() const;
  /// One word a diff of this tweak since the last call: "UpdateHook(a)", "AddHooks(b,c)",
  /// "DeleteHook" with the hooks' selectors, "other".
  std::vector<std::string> takeDiffs() const;

 private:
  TemporaryFolder folder_;
  std::shared_ptr<TweakFile> file_;
  NotificationCenter::Token token_{};
  mutable std::mutex lock_;
  mutable std::vector<std::string> diffs_;
};

/// An instance method's hook of class C as JSON; `args` are the members of its table.
std::string storedHook(const std::string& selector, const std::string& args = "");

}  // namespace tavlen
