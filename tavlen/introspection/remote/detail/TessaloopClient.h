#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/foundation/tasks/SerialQueue.h"
#include "tavlen/introspection/remote/TessaloopDatagram.h"

namespace tavlen {

class DatagramReceiver;

/// Relaunches apps with the dump agent in them and receives the agent's reports. Requests run one
/// after the other; a new one cancels those before it. Senders are not checked: the agent of a
/// cancelled request may still answer a later one.
///
///     caller          invocation queue           socket queue         system and agent
///     invoke() -----> run()
///                       Listening::start() ----> receive()
///                       ends the app ------------------------------> the app ends
///                       pause
///                       launch() ----------------------------------> the agent starts in the app
///                       wait()                     progress() <----- reports
///                         :                        setPath() <------ the final report
///                         : <--------------------  end()
///                       ~Listening() closes the socket
///     the path <-----
///
/// cancel(), and a new invoke(), mark the request as cancelled, which ends pause and wait(), and
/// close the socket, which ends receive(). An error of the launch ends wait() as well.
///
/// Threads: any. The process has one client, used by invokeTessaloop().
class TessaloopClient {
 public:
  /// Called on a thread of the client, never after the request has returned, with any double that
  /// the agent sends. Must not throw and must not start a request; it may cancel.
  using ProgressHandler = std::function<void(double fraction)>;

  /// Constants of the protocol, variable for tests.
  struct Parameters {
    /// The port to which the agent sends; 0 selects a free one for each request.
    std::uint16_t port = TessaloopDatagram::kPort;
    /// The time that the system needs to notice the end of the app before it is opened again.
    std::chrono::microseconds pause{500'000};
  };

  /// A client with the default parameters.
  TessaloopClient() : TessaloopClient(Parameters()) {}
  /// A client with its two threads. Throws std::system_error when they cannot be started.
  explicit TessaloopClient(const Parameters& parameters);
  TessaloopClient(const TessaloopClient&) = delete;
  TessaloopClient& operator=(const TessaloopClient&) = delete;
  /// No call may be in progress.
  ~TessaloopClient();

  /// Ends the app `bundleID`, opens it again with the agent, which dumps the main program or the
  /// image `imagePath` (a path on the device), and waits. Returns the path of the archive on the
  /// device, or nothing on any failure.
  ///
  /// Blocks, without a time limit if the agent never ends, until cancel() or another request. The
  /// app is opened again even if the port is taken. Failures of the launch and of the port are
  /// logged.
  std::optional<std::string> invoke(const std::string& bundleID, const std::string& imagePath,
                                    bool isMainExecutable, const ProgressHandler& progress);

  /// Cancels all waiting and running requests at any step: they return nothing. Steps that have not
  /// begun (ending the app, opening it) are skipped; one in progress is finished first. Waits for a
  /// running progress handler, unless that makes this call; then the port is free.
  void cancel();

  /// The port that is listened on; nothing outside of a request.
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
  /// Cancels the registered requests, and calls `next` in the same step, so that none that a newer
  /// one cancelled can be after it in the queue, where it would wait for its end.
  void endRequests(FunctionRef<void()> next);

  Parameters parameters_;
  std::mutex socketLock_;
  std::vector<std::shared_ptr<Request>> requests_;  ///< not yet returned; guarded by socketLock_
  std::shared_ptr<DatagramReceiver> receiver_;  ///< of the running request; guarded by socketLock_
  SerialQueue socketQueue_;
  SerialQueue invocationQueue_;
};

}  // namespace tavlen
