#pragma once

#include <future>

#include "tavlen/bundles/IPA.h"
#include "tavlen/device/DevicePrograms.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/foundation/tasks/DatagramReceiver.h"
#include "tavlen/introspection/remote/detail/TessaloopClient.h"
#include "tests/support/AppPlist.h"
#include "tests/support/LogLines.h"
#include "tests/support/StandIns.h"
#include "tests/support/UDPSender.h"

namespace tavlen {

inline constexpr std::chrono::seconds kLongestWait(60);

inline bool becomesTrue(const std::function<bool()>& condition) {
  const auto end = std::chrono::steady_clock::now() + kLongestWait;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

/// The value, or a failure and `instead` after the longest wait.
template <class T>
T valueOf(std::future<T>& future, T instead) {
  if (future.wait_for(kLongestWait) == std::future_status::ready) return future.get();
  ADD_FAILURE() << "a request did not end";
  return instead;
}

using Path = std::optional<std::string>;

/// A device tree of the test's own with an app and the device's kill, a launch service that starts
/// the reference agent in the app's place, and the log.
class DumpTest : public testing::Test {
 protected:
  static constexpr const char* kApp = "com.example.dumped";
  /// Opened without anything in it, so that its requests go on until somebody ends them.
  static constexpr const char* kSilentApp = "com.example.silent";
  /// The image in the app, as the device names it.
  static constexpr const char* kImage = "/Applications/Dumped.app/Frameworks/Probe.dylib";

  DumpTest() {
    DeviceRoot::setShared(DeviceRoot(tree()));
    tree_.write("kill", "#!/bin/sh\nkill \"$@\" 2>/dev/null\n");
    std::filesystem::permissions(tree() / "kill", std::filesystem::perms::owner_all);
    DevicePrograms::setForOtherRoots({{}, tree() / "kill", {}});
    writeInfo(kApp);
    tree_.write("Applications/Dumped.app/Frameworks/none", "");
    fs::copy_file(paths().dumpedImage, tree() / (kImage + 1));
  }
  ~DumpTest() override { DeviceRoot::setShared(DeviceRoot()); }

  const fs::path& tree() const { return tree_.path(); }
  fs::path write(const std::string& name, std::string_view bytes) const {
    return tree_.write(name, bytes);
  }
  fs::path appDir() const { return tree() / "Applications/Dumped.app"; }
  void writeInfo(const std::string& bundleID) const {
    tree_.write("Applications/Dumped.app/Info.plist", appPlist(bundleID, "Dumped"));
  }

  /// The script of the stand-ins: the agent in kApp reports to `port`.
  std::string script(std::uint16_t port, const std::string& environment = "",
                     const std::string& more = "") const {
    return "<key>launchDelay</key><real>0</real><key>programs</key><dict><key>" +
           std::string(kApp) + "</key><string>" + paths().dumpAgentWithClasses +
           "</string></dict>" +
           "<key>programEnvironment</key><dict><key>TAVLEN_ROOT</key><string>" +
           DeviceRoot::shared().url().string() + "</string><key>TESSALOOP_PORT</key><string>" +
           std::to_string(port) + "</string>" + environment + "</dict>" + more;
  }

  long archiveFolders() const {
    std::error_code none;
    const fs::directory_iterator folders(tree() / "tmp", none);
    return none ? 0 : std::distance(begin(folders), end(folders));
  }

 private:
  TemporaryFolder tree_;

 protected:
  LogLines log_;
  /// The app and its image, which are read when a test asks them.
  std::shared_ptr<IPA> ipa_ = IPA::withAppDir(appDir());
  Executable image_{ipa_, appDir(), "Frameworks/Probe.dylib", false};
};

/// A port that nobody has, for requests of which an agent is told beforehand. It is none of those
/// that the system gives away before it is bound again, nor one of another test that runs now.
inline std::uint16_t freePort() {
  constexpr int kFirst = 10'000;
  constexpr int kLast = 32'000;
  for (int port = kFirst + ::getpid() * 7 % (kLast - kFirst); port < kLast; ++port) {
    try {
      return DatagramReceiver(static_cast<std::uint16_t>(port)).port();
    } catch (const std::system_error&) {
    }
  }
  ADD_FAILURE() << "no port is free";
  return 0;
}

inline TessaloopClient::Parameters quick(std::uint16_t port = 0) {
  return {port, std::chrono::microseconds(0)};
}

/// A request on a thread of its own, and what its progress handler was given. It goes before its
/// client does, and ends the request if need be.
class RunningRequest {
 public:
  RunningRequest(TessaloopClient& client, std::string bundleID, std::string image = "/image",
                 bool isMain = false)
      : client_(client), path_(std::async(std::launch::async, [this, bundleID, image, isMain] {
          return client_.invoke(bundleID, image, isMain, [this](double fraction) {
            const std::lock_guard lock(lock_);
            fractions_.push_back(fraction);
          });
        })) {}
  RunningRequest(const RunningRequest&) = delete;
  RunningRequest& operator=(const RunningRequest&) = delete;
  ~RunningRequest() {
    while (path_.valid() &&
           path_.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready) {
      client_.cancel();
    }
  }

  Path path() { return valueOf(path_, Path("the request did not end")); }
  bool hasEnded() const {
    return path_.wait_for(std::chrono::milliseconds(0)) == std::future_status::ready;
  }
  std::vector<double> fractions() const {
    const std::lock_guard lock(lock_);
    return fractions_;
  }

 private:
  TessaloopClient& client_;
  mutable std::mutex lock_;
  std::vector<double> fractions_;
  std::future<Path> path_;
};

}  // namespace tavlen
