#include "tavlen/introspection/TessaloopInterface.h"

#include <atomic>

#include "tavlen/introspection/TessaloopClient.h"

namespace tavlen {

namespace {

/// Null until the first request: to cancel, no threads need be made.
std::atomic<TessaloopClient*> madeClient = nullptr;

TessaloopClient& sharedClient() {
  // Never destroyed: other threads may wait in it while the process ends.
  static TessaloopClient& client = *new TessaloopClient;
  madeClient = &client;
  return client;
}

}  // namespace

std::optional<std::string> invokeTessaloop(const std::string& bundleID,
                                           const std::string& imagePath, bool isMainExecutable,
                                           const std::function<void(double fraction)>& progress) {
  return sharedClient().invoke(bundleID, imagePath, isMainExecutable, progress);
}

void cancelTessaloopIfNeeded() {
  if (TessaloopClient* const client = madeClient) client->cancel();
}

}  // namespace tavlen
