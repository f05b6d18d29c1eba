#include "tests/faults/SampleStore.h"

#include "tavlen/device/DevicePaths.h"
#include "tavlen/device/DeviceRoot.h"

namespace tavlen::faults {

namespace {

namespace fs = std::filesystem;

std::string manifestNamed(const std::string& name) {
  return R"({"configuration":{"name":")" + name +
         R"(","color":"darkRed","bundleID":"com.example.app"},"overrides":[],"hooks":[)"
         R"({"className":"A","selector":"number","signature":"q16@0:8","isClassMethod":false,)"
         R"("args":{"-1":{"type":"_ValueParameter<Int64>","value":7}}}]})";
}

}  // namespace

SampleStore::SampleStore(const std::function<void()>& prepare)
    : root_(fs::canonical(folder_.path()) / "root"), copy_(folder_.path() / "copy") {
  const std::string store = "root" + std::string(kTweaksDir) + "/";
  folder_.write(store + kFirstTweak + "/Manifest.json", manifestNamed("First"));
  folder_.write(store + kFirstTweak + "/script.objs", "first();\n");
  folder_.write(store + kFirstTweak + "/Resources/note.txt", "a note");
  fs::create_directories(folder_.path() / (store + kFirstTweak) / "Executables");
  folder_.write(store + kSecondTweak + "/Manifest.json", manifestNamed("Second"));
  fs::create_directories(folder_.path() / (store + kSecondTweak) / "Resources");
  folder_.write(
      store + kCollection,
      R"({"configuration":{"name":"Both","color":"darkRed","bundleID":"com.example.app"},)"
      R"("tweaks":[")" +
          kFirstTweak + R"(",")" + kSecondTweak + R"("]})");
  DeviceRoot::setShared(DeviceRoot(root_));
  if (prepare) prepare();
  fs::copy(root_, copy_, fs::copy_options::recursive);
}

void SampleStore::reset() const {
  fs::remove_all(root_);
  fs::copy(copy_, root_, fs::copy_options::recursive);
}

}  // namespace tavlen::faults
