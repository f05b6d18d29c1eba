#include "tavlen/introspection/remote/TessaloopInterface.h"

#include <atomic>
#include <string>
#include <system_error>

#include "tavlen/foundation/text/Log.h"
#include "tavlen/introspection/remote/detail/TessaloopClient.h"

namespace tavlen {

namespace {

/// Null until the first request, so that a cancel creates no threads.
std::atomic<TessaloopClient*> madeClient = nullptr;

/// The client; null when no thread can be started, and then the next call tries again.
TessaloopClient* sharedClient() {
  try {
    // Never destroyed: other threads may wait in it while the process ends.
    static TessaloopClient& client = *new TessaloopClient;
    madeClient = &client;
    return &client;
  } catch (const std::system_error& error) {
    logMessage(std::string("error preparing for the dump agent: ") + error.what());
    return nullptr;
  }
}

}  // namespace

std::optional<std::string> invokeTessaloop(const std::string& bundleID,
                                           const std::string& imagePath, bool isMainExecutable,
                                           const std::function<void(double fraction)>& progress) {
  TessaloopClient* const client = sharedClient();
  if (client == nullptr) return std::nullopt;
  return client->invoke(bundleID, imagePath, isMainExecutable, progress);
}

void cancelTessaloopIfNeeded() {
  if (TessaloopClient* const client = madeClient) client->cancel();
}

}  // namespace tavlen
