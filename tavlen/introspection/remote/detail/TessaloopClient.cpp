#include "tavlen/introspection/remote/detail/TessaloopClient.h"

#include <algorithm>
#include <array>
#include <condition_variable>
#include <future>
#include <string_view>
#include <system_error>
#include <utility>

#include "tavlen/device/AppControl.h"
#include "tavlen/device/SystemService.h"
#include "tavlen/foundation/base/FatalError.h"
#include "tavlen/foundation/errors/Placeholders.h"
#include "tavlen/foundation/tasks/DatagramReceiver.h"
#include "tavlen/foundation/text/Log.h"

namespace tavlen {

/// The state of one request. Shared with the system's completion block, so that a block that is
/// called late, twice or never does not affect other requests.
class TessaloopClient::Request {
 public:
  bool isCancelled() {
    const std::lock_guard lock(lock_);
    return isCancelled_;
  }
  void cancel() {
    const std::lock_guard lock(lock_);
    isCancelled_ = true;
    isEnded_ = true;
    path_.reset();
    changed_.notify_all();
  }
  /// Ends wait() with the path received so far.
  void end() {
    const std::lock_guard lock(lock_);
    isEnded_ = true;
    changed_.notify_all();
  }
  /// Ignored for a cancelled request: the path came too late.
  void setPath(std::optional<std::string> path) {
    const std::lock_guard lock(lock_);
    if (!isCancelled_) path_ = std::move(path);
  }

  void pause(std::chrono::microseconds duration) {
    // The clock overflows for durations that a caller may pass.
    constexpr std::chrono::microseconds kLongest = std::chrono::hours(24);
    std::unique_lock lock(lock_);
    changed_.wait_for(lock, std::min(duration, kLongest), [this] { return isCancelled_; });
  }
  std::optional<std::string> wait() {
    std::unique_lock lock(lock_);
    changed_.wait(lock, [this] { return isEnded_; });
    return path_;
  }

 private:
  std::mutex lock_;
  std::condition_variable changed_;
  bool isCancelled_ = false;
  bool isEnded_ = false;
  std::optional<std::string> path_;
};

/// RAII: a request in the queue, which can be cancelled for the duration of its call.
class TessaloopClient::Registration {
 public:
  /// Cancels the requests before it and enqueues `work`, which must live as long as the object.
  Registration(TessaloopClient& client, std::shared_ptr<Request> request, FunctionRef<void()> work)
      : client_(client), request_(std::move(request)) {
    client_.endRequests([&] {
      client_.requests_.reserve(client_.requests_.size() + 1);
      end_ = client_.invocationQueue_.submit(work);
      client_.requests_.push_back(request_);
    });
  }
  Registration(const Registration&) = delete;
  Registration& operator=(const Registration&) = delete;
  ~Registration() {
    const std::lock_guard lock(client_.socketLock_);
    std::erase(client_.requests_, request_);
  }

  /// Waits for the end of the work, and throws what that threw. Call once.
  void wait() { end_.get(); }

 private:
  TessaloopClient& client_;
  std::shared_ptr<Request> request_;
  std::future<void> end_;
};

/// RAII: the socket of a request and its receiving loop. After destruction the port is free, and no
/// work of the request is left on the socket's queue.
class TessaloopClient::Listening {
 public:
  explicit Listening(TessaloopClient& client) : client_(client) {}
  Listening(const Listening&) = delete;
  Listening& operator=(const Listening&) = delete;
  ~Listening() {
    if (receiver_ == nullptr) return;
    receiver_->close();
    client_.socketQueue_.sync([] {});
    const std::lock_guard lock(client_.socketLock_);
    client_.receiver_ = nullptr;
  }

  void start(const std::shared_ptr<Request>& request, const ProgressHandler& progress) {
    try {
      bind(*request);
    } catch (const std::system_error& error) {
      logMessage(std::string("error listening to the dump agent: ") + error.what());
    }
    if (receiver_ == nullptr) return request->end();
    client_.socketQueue_.async([receiver = receiver_, request, progress] {
      receiver->receive(TessaloopDatagram::kMostBytes, [&](std::string_view bytes) {
        TessaloopDatagram datagram = TessaloopDatagram::read(bytes);
        if (datagram.isFinal()) {
          request->setPath(std::move(datagram.path));
          return false;
        }
        if (progress) progress(datagram.value);
        return true;
      });
      request->end();
    });
  }

 private:
  /// Skipped for a cancelled request: its cancel has passed and would not close this socket.
  void bind(Request& request) {
    const std::lock_guard lock(client_.socketLock_);
    if (request.isCancelled()) return;
    receiver_ = std::make_shared<DatagramReceiver>(client_.parameters_.port);
    client_.receiver_ = receiver_;
  }

  TessaloopClient& client_;
  std::shared_ptr<DatagramReceiver> receiver_;
};

TessaloopClient::TessaloopClient(const Parameters& parameters)
    : parameters_(parameters),
      socketQueue_("dev.tavlen.tessaloop-interface-socket-queue"),
      invocationQueue_("dev.tavlen.tessaloop-interface-invocation-queue") {}

TessaloopClient::~TessaloopClient() = default;

std::optional<std::string> TessaloopClient::invoke(const std::string& bundleID,
                                                   const std::string& imagePath,
                                                   bool isMainExecutable,
                                                   const ProgressHandler& progress) {
  if (socketQueue_.isCurrent() || invocationQueue_.isCurrent()) {
    fatalError("a part of a dump requests another dump");
  }
  const std::string image =
      isMainExecutable ? std::string(TessaloopDatagram::kMainImage) : imagePath;
  std::optional<std::string> path;
  const auto request = std::make_shared<Request>();
  const auto work = [&] { path = run(request, bundleID, image, progress); };
  Registration(*this, request, work).wait();
  return path;
}

void TessaloopClient::cancel() {
  endRequests([] {});
}

std::optional<std::uint16_t> TessaloopClient::port() {
  const std::lock_guard lock(socketLock_);
  if (receiver_ == nullptr || receiver_->isClosed()) return std::nullopt;
  return receiver_->port();
}

void TessaloopClient::endRequests(FunctionRef<void()> next) {
  std::shared_ptr<DatagramReceiver> receiver;
  {
    const std::lock_guard lock(socketLock_);
    for (const std::shared_ptr<Request>& request : requests_) request->cancel();
    next();
    receiver = receiver_;
  }
  // Without the lock: close() waits for a progress handler, which may call cancel().
  if (receiver != nullptr) receiver->close();
}

std::optional<std::string> TessaloopClient::run(const std::shared_ptr<Request>& request,
                                                const std::string& bundleID,
                                                const std::string& image,
                                                const ProgressHandler& progress) {
  Listening listening(*this);
  listening.start(request, progress);
  if (!request->isCancelled()) killAppWithBundleID(bundleID);
  request->pause(parameters_.pause);
  if (!request->isCancelled()) launch(request, bundleID, image);
  return request->wait();
}

void TessaloopClient::launch(const std::shared_ptr<Request>& request, const std::string& bundleID,
                             const std::string& image) {
  SystemService::OpenOptions options;
  options.isSuspended = true;
  options.environment.emplace(TessaloopDatagram::kImageVariable, image);
  SystemService::openApplication(bundleID, options,
                                 [request, bundleID](const std::optional<std::string>& error) {
                                   if (!error) return;
                                   const std::array<std::string, 2> arguments = {bundleID, *error};
                                   logMessage(fillPlaceholders("error opening %@: %@", arguments));
                                   request->end();
                                 });
}

}  // namespace tavlen
