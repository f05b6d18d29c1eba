#include "tavlen/bundles/IPA.h"
#include "tavlen/device/DeviceRoot.h"
#include "tests/faults/Operation.h"
#include "tests/faults/SampleStore.h"
#include "tests/support/AppPlist.h"
#include "tests/support/SamplePackage.h"
#include "tests/support/TestPaths.h"

namespace tavlen::faults {

namespace {

namespace fs = std::filesystem;

fs::path app() { return DeviceRoot::shared().url() / "Applications/Sample.app"; }

void setActive(const std::string& id) {
  const SamplePackage package(id);
  IPA::withAppDir(app())->setActiveTweak(id.empty() ? nullptr : &package);
}

void writeFile(const fs::path& file, const std::string& text) {
  fs::create_directories(file.parent_path());
  replaceFile(file, text);
  fs::permissions(file, fs::perms::owner_all);
}

/// The app, the programs of the device, and the first tweak, installed.
void prepare() {
  const fs::path root = DeviceRoot::shared().url();
  ::setenv("TAVLEN_ROOT", root.c_str(), 1);
  writeFile(app() / "Info.plist", appPlist("com.example.app", "Sample"));
  writeFile(root / kFileOperationsPath.substr(1),
            "#!/bin/sh\nexec '" + paths().fileOperations + "' \"$@\"\n");
  for (const char* program : {"usr/bin/killall", "bin/kill"})
    writeFile(root / program, "#!/bin/sh\n");
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
