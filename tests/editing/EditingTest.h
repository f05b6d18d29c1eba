#pragma once

#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/json/JSONEncoder.h"
#include "tests/support/StoreTest.h"

namespace tavlen {

/// An instance method's hook of class C as JSON; `args` are the members of its table.
inline std::string storedHook(const std::string& selector, const std::string& args = "") {
  return R"({"className":"C","selector":")" + selector +
         R"(","signature":"v16@0:8","isClassMethod":false,"args":{)" + args + "}}";
}

/// Edits a tweak's hooks.
class EditingTest : public StoreTest {
 protected:
  /// Gives the tweak these hooks, the elements of the manifest's list.
  void store(const std::string& hooks) {
    root_.write("T 1/Manifest.json",
                R"({"configuration":{"name":"N","color":"darkRed","bundleID":"a.b"},)"
                R"("overrides":[],"hooks":[)" +
                    hooks + "]}");
    file_ = TweakFile::at(root_.path() / "T 1");
  }
  /// The manifest's bytes.
  std::string stored() const { return readFile(root_.path() / "T 1/Manifest.json"); }
  /// The manifest's list of hooks, as it is stored.
  std::string storedHooks() const { return encodeJSON(file_->manifest()._hooks); }

  std::shared_ptr<TweakFile> file_;
};

}  // namespace tavlen
