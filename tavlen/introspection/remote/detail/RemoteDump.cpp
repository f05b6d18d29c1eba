#include "tavlen/introspection/remote/detail/RemoteDump.h"

#include <cmath>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <optional>
#include <string>

#include "tavlen/bundles/Executable.h"
#include "tavlen/bundles/IPA.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/foundation/archive/KeyedArchive.h"
#include "tavlen/foundation/base/FatalError.h"
#include "tavlen/foundation/base/Limits.h"
#include "tavlen/foundation/tasks/ScopedProgress.h"
#include "tavlen/foundation/text/Log.h"
#include "tavlen/introspection/remote/RemoteClassParser.h"
#include "tavlen/introspection/remote/detail/DumpFolder.h"

namespace tavlen {

namespace {

namespace fs = std::filesystem;

constexpr std::int64_t kUnitsOfDump = 100;

[[noreturn]] void failLogging(const std::string& reason) {
  logMessage("remote dump: " + reason);
  throw RemoteClassParser::Error::failed();
}

std::int64_t unitsDone(double fraction) {
  constexpr double kLimit = 0x1p63;
  const double units = std::trunc(fraction * static_cast<double>(kUnitsOfDump));
  // Written so that NaN fails the comparison.
  if (!(units >= -kLimit && units < kLimit)) {
    fatalError("the dump agent's progress does not fit into 64 bits");
  }
  return static_cast<std::int64_t>(units);
}

std::string bundleIDOf(const IPA& ipa) {
  try {
    return ipa.infoManager().info().bundleID;
  } catch (const std::exception& error) {
    failLogging(error.what());
  }
}

DumpFolder folderOf(const std::string& archive) {
  try {
    return DumpFolder(archive);
  } catch (const std::exception& error) {
    failLogging(error.what());
  }
}

ClassParser::Classes classesIn(const DumpFolder& folder, const std::string& archive) {
  std::string bytes;
  try {
    bytes = folder.readArchive(limits::kDumpBytes);
  } catch (const std::exception& error) {
    failLogging(error.what());
  }
  try {
    return decodeKeyedArchive<ClassParser::Classes>(bytes);
  } catch (const std::exception& error) {
    failLogging(archive + ": " + error.what());
  }
}

}  // namespace

ClassParser::Classes dumpRemotely(const Executable& executable,
                                  const std::shared_ptr<Progress>& parent, DumpRequest request) {
  const std::shared_ptr<Progress> progress = Progress::discrete(1);
  if (parent != nullptr) parent->addChild(progress, 1);
  const std::shared_ptr<IPA> ipa = executable.ipa();
  if (ipa == nullptr) throw RemoteClassParser::Error::failed();
  std::string bundleID;
  std::shared_ptr<Progress> dump;
  {
    const ScopedProgress current(progress, 1);
    bundleID = bundleIDOf(*ipa);
    dump = Progress::make(kUnitsOfDump);
  }
  const fs::path image = DeviceRoot::shared().devicePath(fs::absolute(executable.path()));
  const std::optional<std::string> archive =
      request(bundleID, image.string(), executable.isMain(),
              [&](double fraction) { dump->setCompletedUnitCount(unitsDone(fraction)); });
  if (!archive) throw RemoteClassParser::Error::failed();
  const DumpFolder folder = folderOf(*archive);
  ClassParser::Classes classes = classesIn(folder, *archive);
  folder.remove(ipa->appDir());
  return classes;
}

}  // namespace tavlen
