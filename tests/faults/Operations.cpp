#include "tavlen/bundles/IPA.h"
#include "tavlen/device/DevicePrograms.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/editing/RootParameterManager.h"
#include "tavlen/foundation/files/TemporaryDirectory.h"
#include "tavlen/foundation/zip/ZIPArchive.h"
#include "tavlen/items/TweaksDirectory.h"
#include "tavlen/store/TweakManager.h"
#include "tests/faults/SampleStore.h"
#include "tests/support/AppPlist.h"
#include "tests/support/SamplePackage.h"
#include "tests/support/TestPaths.h"

namespace tavlen::faults {

namespace {

const Image kPicture(1, 1, {255, 0, 0, 255});

std::shared_ptr<TweakFile> firstTweak() {
  return TweakFile::at(TweaksDirectory::url() / kFirstTweak);
}

HookManager managerFor(const char* selector) {
  return firstTweak()->managerFor({"A", selector, false});
}

std::shared_ptr<TweakCollection> collection() {
  return std::dynamic_pointer_cast<TweakCollection>(TweakManager::tweakWithID(kCollection));
}

fs::path archiveOf(const std::string& id) {
  const bool isCollection = TweakCollection::isValidID(id);
  return DeviceRoot::shared().url() / (isCollection ? "archive.tvxc" : "archive.tvx");
}

void exportItem(const std::string& id) {
  const fs::path archive = TweakManager::export_(*TweakManager::tweakWithID(id));
  moveItem(archive, archiveOf(id));
  fs::remove_all(archive.parent_path());
}

void importItem(const std::string& id) { TweakManager::decompressAt(archiveOf(id)); }

/// What is in the archive, which is unpacked some thousand times.
Tree unpacked(const fs::path& archive) {
  const TemporaryFolder folder(memoryFolder());
  ZIPArchive::unzipItem(archive, folder.path() / "unpacked");
  return readTree(folder.path() / "unpacked");
}

Operation exportOf(const char* name, const std::string& id) {
  return {.name = name,
          .run = [id] { exportItem(id); },
          .survivesInterrupts = false,
          .leavesOut = id == kCollection,
          .readArchive = unpacked};
}

Operation importOf(const char* name, const std::string& id, Leftover leftover) {
  return {.name = name,
          .run = [id] { importItem(id); },
          .prepare = [id] { exportItem(id); },
          .leftover = leftover,
          .survivesInterrupts = false};
}

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
  writeFile(root / "program", "#!/bin/sh\n");
  DevicePrograms::setForOtherRoots({paths().fileOperations, root / "program", root / "program"});
  setActive(kFirstTweak);
}

}  // namespace

std::vector<Operation> storeOperations() {
  return {
      {"ManifestWrite",
       [] {
         firstTweak()->updateManifest(
             [](TweakFile::Manifest& manifest) { manifest.configuration.name = "Changed"; });
       }},
      // More than a stream or a socket takes at once.
      {"FileReplacement",
       [] { replaceFile(firstTweak()->resourcesDir() / "note.txt", std::string(300'000, 'x')); }},
      {.name = "Create",
       .run = [] { TweakFile::create("New", TweakColor::darkRed, TweakGlyph::default_(), "a.b"); },
       .leftover = Leftover::halfMadeItem},
      {"Delete", [] { firstTweak()->remove(); }},
      {"Script", [] { firstTweak()->writeScript("changed();\n"); }},
      {.name = "Replacement",
       .run =
           [] {
             const TemporaryDirectory folder(TweaksDirectory::url());
             firstTweak()->preparePayloadIn(folder.path() / "draft");
             TweakFile::handle(folder.path() / "draft")->writeScript("changed();\n");
             firstTweak()->replaceBy(folder.path() / "draft");
           },
       .survivesInterrupts = false},
      {"IconSet", [] { firstTweak()->writeCustomIcon(kPicture); }},
      {.name = "IconClear",
       .run = [] { firstTweak()->writeCustomIcon(std::nullopt); },
       .prepare = [] { firstTweak()->writeCustomIcon(kPicture); }},
      {"HookAddition",
       [] { managerFor("other").setHook(Hook::with("A", "other", "v16@0:8", false, {})); }},
      {"HookDeletion", [] { managerFor("number").deleteHook(); }},
      {"ParameterEdit",
       [] {
         RootParameterManager(managerFor("number"), Hook::kReturnValue)
             .setParameter(ValueParameter<std::int64_t>{8});
       }},
      {.name = "CollectionCreate",
       .run =
           [] {
             TweakCollection::create("New", TweakColor::darkRed, TweakGlyph::default_(), "a.b");
           },
       .leftover = Leftover::halfMadeItem},
      {"CollectionMembers",
       [] {
         collection()->updateManifest(
             [](TweakCollection::Manifest& manifest) { manifest._tweaks.pop_back(); });
       }},
      {"CollectionDelete", [] { collection()->remove(); }},
      exportOf("TweakExport", kFirstTweak),
      exportOf("CollectionExport", kCollection),
      importOf("TweakImport", kFirstTweak, Leftover::nothing),
      importOf("CollectionImport", kCollection, Leftover::movedMembers),
  };
}

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
