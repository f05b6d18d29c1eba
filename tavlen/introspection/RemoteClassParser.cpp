#include "tavlen/introspection/RemoteClassParser.h"

#include <cmath>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <optional>
#include <string>

#include "tavlen/bundles/Executable.h"
#include "tavlen/bundles/IPA.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/foundation/FatalError.h"
#include "tavlen/foundation/FileSystem.h"
#include "tavlen/foundation/KeyedArchive.h"
#include "tavlen/foundation/Log.h"
#include "tavlen/introspection/DumpFolder.h"
#include "tavlen/introspection/TessaloopInterface.h"

namespace tavlen {

namespace {

namespace fs = std::filesystem;

/// A hundred times what large apps need.
constexpr std::size_t kLargestArchive = std::size_t{256} << 20;
constexpr std::int64_t kUnitsOfDump = 100;

/// Makes a progress the thread's current one for as long as it lives.
class CurrentProgress {
 public:
  CurrentProgress(Progress& progress, std::int64_t units) : progress_(progress) {
    progress_.becomeCurrent(units);
  }
  CurrentProgress(const CurrentProgress&) = delete;
  CurrentProgress& operator=(const CurrentProgress&) = delete;
  ~CurrentProgress() { progress_.resignCurrent(); }

 private:
  Progress& progress_;
};

[[noreturn]] void failLogging(const std::string& reason) {
  logMessage("remote dump: " + reason);
  throw RemoteClassParser::Error::failed();
}

std::int64_t unitsDone(double fraction) {
  constexpr double kLimit = 0x1p63;
  const double units = std::trunc(fraction * static_cast<double>(kUnitsOfDump));
  // NaN is on no side of a limit.
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

ClassParser::Classes classesIn(const std::string& devicePath) {
  try {
    const fs::path path(devicePath);
    const fs::path file = path.is_relative() ? path : DeviceRoot::shared().resolve(devicePath);
    const std::optional<std::string> bytes = readFileUpTo(file, kLargestArchive);
    if (!bytes) failLogging(devicePath + ": the archive is too large");
    return decodeKeyedArchive<ClassParser::Classes>(*bytes);
  } catch (const RemoteClassParser::Error&) {
    throw;
  } catch (const std::exception& error) {
    failLogging(error.what());
  }
}

}  // namespace

RemoteClassParser::Error RemoteClassParser::Error::failed() {
  return Error({"remote_class_parser.error.failed", "Remote dump failed"});
}

ClassParser::Classes RemoteClassParser::parseBelow(const std::shared_ptr<Progress>& parent,
                                                   const Executable& executable) const {
  const std::shared_ptr<Progress> progress = Progress::discrete(1);
  if (parent != nullptr) parent->addChild(progress, 1);
  const std::shared_ptr<IPA> ipa = executable.ipa();
  if (ipa == nullptr) throw Error::failed();
  std::string bundleID;
  std::shared_ptr<Progress> dump;
  {
    const CurrentProgress current(*progress, 1);
    bundleID = bundleIDOf(*ipa);
    dump = Progress::make(kUnitsOfDump);
  }
  const fs::path image = DeviceRoot::shared().devicePath(fs::absolute(executable.path()));
  const std::optional<std::string> archive =
      invokeTessaloop(bundleID, image.string(), executable.isMain(),
                      [&](double fraction) { dump->setCompletedUnitCount(unitsDone(fraction)); });
  if (!archive) throw Error::failed();
  Classes classes = classesIn(*archive);
  removeDumpFolder(*archive, ipa->appDir());
  return classes;
}

}  // namespace tavlen
