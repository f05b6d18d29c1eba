// The reference dump agent. The agent on a device is a library in an app; this one is a program. It
// dumps the image in TESSALOOP_IMAGE (its own program for TESSALOOP_MAIN), sends its reports to the
// port, and exits with 0 if the archive was received.
//
// Paths, including its own, are device paths: TAVLEN_ROOT is the folder that represents the
// device's "/". TESSALOOP_PORT sets another port, for tests.
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "dumpagent/ArchiveFolder.h"
#include "dumpagent/ProgressReporter.h"
#include "dumpagent/ReportSender.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/foundation/archive/KeyedArchive.h"
#include "tavlen/foundation/files/ExecutablePath.h"
#include "tavlen/foundation/tasks/ScopedProgress.h"
#include "tavlen/foundation/text/Log.h"
#include "tavlen/introspection/classes/DynamicClassParser.h"

namespace {

using namespace tavlen;
using namespace tavlen::dumpagent;

/// The value of an environment variable; empty if it is not set.
std::string environmentValue(std::string_view name) {
  const char* const value =
      std::getenv(std::string(name).c_str());  // NOLINT(concurrency-mt-unsafe)
  return value == nullptr ? "" : value;
}

std::uint16_t portToReportTo() {
  const std::string text = environmentValue("TESSALOOP_PORT");
  if (text.empty()) return TessaloopDatagram::kPort;
  std::uint16_t port = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
  if (error != std::errc() || end != text.data() + text.size()) {
    throw std::runtime_error("TESSALOOP_PORT is not a port number");
  }
  return port;
}

std::string archiveOfImage(const DeviceRoot& root, const ReportSender& sender) {
  const std::string image = environmentValue(TessaloopDatagram::kImageVariable);
  if (image.empty()) throw std::runtime_error("TESSALOOP_IMAGE is not set");
  // The program itself is already loaded, and cannot be loaded again.
  const bool isMain = image == TessaloopDatagram::kMainImage;
  const std::filesystem::path path = isMain ? executablePath() : root.resolve(image);
  const std::shared_ptr<Progress> progress = Progress::discrete(1);
  const ProgressReporter reporter(progress, sender);
  const ScopedProgress current(progress, 1);
  const auto classes = DynamicClassParser::sharedParser().parseClassesAtPath(path, !isMain);
  if (!classes) throw std::runtime_error(image + ": cannot be dumped");
  return encodeKeyedArchive(*classes);
}

void dump(const ReportSender& sender) {
  const std::string rootPath = environmentValue("TAVLEN_ROOT");
  const DeviceRoot root = rootPath.empty() ? DeviceRoot() : DeviceRoot(rootPath);
  const std::string archive = archiveOfImage(root, sender);
  ArchiveFolder folder(root.resolve("/tmp"));
  const std::filesystem::path path = root.devicePath(folder.write(archive));
  sender.send({.value = TessaloopDatagram::kFinal, .path = path.string()});
  if (!sender.wasTaken()) throw std::runtime_error("no one received the archive");
  folder.leave();
}

}  // namespace

int main() {
  try {
    const ReportSender sender(portToReportTo());
    try {
      dump(sender);
      return EXIT_SUCCESS;
    } catch (const std::exception&) {
      sender.send({.value = TessaloopDatagram::kFinal, .path = {}});
      throw;
    }
  } catch (const std::exception& error) {
    logToStandardError(std::string("dumpagent: ") + error.what());
    return EXIT_FAILURE;
  }
}
