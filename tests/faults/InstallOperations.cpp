#include <sys/stat.h>

#include <cstdlib>

#include "tavlen/bundles/IPA.h"
#include "tavlen/bundles/InstallableTweak.h"
#include "tavlen/device/DevicePaths.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/foundation/files/FileReplacement.h"
#include "tests/faults/Operation.h"
#include "tests/faults/SampleStore.h"
#include "tests/support/AppPlist.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPaths.h"

namespace tavlen::faults {

namespace {

namespace fs = std::filesystem;

/// As a tweak is packaged, but for the transpiler, which would take most of the time.
class Package : public InstallableTweak {
 public:
  explicit Package(std::string id) : id_(std::move(id)) {}

  std::string id() const override { return id_; }
  void package(const fs::path& directory, TweakInfo& /*tweakInfo*/) const override {
    const fs::path folder = directory / (id_ + ".bundle");
    fs::create_directory(folder);
    replaceFile(folder / "code.js", "code of " + id_);
  }

 private:
  std::string id_;
};

fs::path app() { return DeviceRoot::shared().url() / "Applications/Sample.app"; }

void setActive(const std::string& id) {
  const Package package(id);
  IPA::withAppDir(app())->setActiveTweak(id.empty() ? nullptr : &package);
}

void writeFile(const fs::path& file, const std::string& text) {
  fs::create_directories(file.parent_path());
  replaceFile(file, text);
}

/// The app, the programs of the device, and the first tweak, installed.
void prepare() {
  const fs::path root = DeviceRoot::shared().url();
  ::setenv("TAVLEN_ROOT", root.c_str(), 1);
  writeFile(app() / "Info.plist", appPlist("com.example.app", "Sample"));
  for (const std::string& program : {std::string(kFileOperationsPath),
                                     std::string("/usr/bin/killall"), std::string("/bin/kill")}) {
    const bool isHelper = program == kFileOperationsPath;
    writeFile(
        root / program.substr(1),
        isHelper ? "#!/bin/sh\nexec '" + paths().fileOperations + "' \"$@\"\n" : "#!/bin/sh\n");
    fs::permissions(root / program.substr(1), fs::perms::owner_all);
  }
  setActive(kFirstTweak);
}

}  // namespace

std::vector<Operation> installOperations() {
  return {
      {.name = "Install",
       .run = [] { setActive(kSecondTweak); },
       .prepare = prepare,
       .leftover = Leftover::noRecord,
       .survivesInterrupts = false},
      {.name = "Uninstall",
       .run = [] { setActive(""); },
       .prepare = prepare,
       .leftover = Leftover::noRecord,
       .survivesInterrupts = false},
  };
}

}  // namespace tavlen::faults
