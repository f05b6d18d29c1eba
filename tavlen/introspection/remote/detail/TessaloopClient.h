#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "tavlen/foundation/tasks/SerialQueue.h"
#include "tavlen/introspection/remote/TessaloopDatagram.h"

namespace tavlen {

class DatagramReceiver;

/// Relaunches apps with the dump agent in them and hears what the agent says. Requests run one
/// after the other; a new one ends those before it. Senders are not examined: the agent of a
/// request that was cancelled may still answer a later one.
///
/// Threads: any. The process has one, behind invokeTessaloop().
class TessaloopClient {
 public:
  /// Called on a thread of the client's, never after the request has returned, with whatever double
  /// the agent sends. Must not throw, and must not start a request; it may cancel.
  using ProgressHandler = std::function<void(double fraction)>;

  struct Parameters {
    /// That the agent sends to; 0 takes a free one for each request.
    std::uint16_t port = TessaloopDatagram::kPort;
    /// For the system to notice that the app has ended, before it is opened again.
    std::chrono::microseconds pause{500'000};
  };

  TessaloopClient() : TessaloopClient(Parameters()) {}
  explicit TessaloopClient(const Parameters& parameters);
  TessaloopClient(const TessaloopClient&) = delete;
  TessaloopClient& operator=(const TessaloopClient&) = delete;
  /// No call may be under way.
  ~TessaloopClient();

  /// Ends the app `bundleID`, opens it again with the agent, which is to dump its program or the
  /// image that the device names `imagePath`, and waits. The path of the archive, as the device
  /// names it, or nothing on any failure.
  ///
  /// Blocks, without limit where the agent never ends, until cancel() or another request. A port
  /// that is taken does not keep the app from being opened again. What goes wrong with the launch
  /// and with the port is logged.
  std::optional<std::string> invoke(const std::string& bundleID, const std::string& imagePath,
                                    bool isMainExecutable, const ProgressHandler& progress);

  /// Ends the requests that wait or run, at whatever step: they return nothing, and what has not
  /// begun, the app's end or its launch, is left out; what has begun is finished first. Waits for a
  /// progress handler that runs, unless it is the one that calls; then the port is free.
  void cancel();

  /// The port that is listened to, or nothing.
  std::optional<std::uint16_t> port();

 private:
  class Request;
  class Registration;
  class Listening;

  std::optional<std::string> run(const std::shared_ptr<Request>& request,
                                 const std::string& bundleID, const std::string& image,
                                 const ProgressHandler& progress);
  static void launch(const std::shared_ptr<Request>& request, const std::string& bundleID,
                     const std::string& image);
  /// Ends those that are registered now, and registers `next` where there is one.
  void endRequests(const std::shared_ptr<Request>& next);

  Parameters parameters_;
  std::mutex socketLock_;
  std::vector<std::shared_ptr<Request>> requests_;  ///< that have not returned; by the lock
  std::shared_ptr<DatagramReceiver> receiver_;      ///< of the one that runs; by the lock
  SerialQueue socketQueue_;
  SerialQueue invocationQueue_;
};

}  // namespace tavlen
