#include "tools/loader/preload/EventSocket.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <string>

#include "tavlen/foundation/files/Connection.h"
#include "tavlen/foundation/json/JSONDecoder.h"

namespace tavlen::loader {
namespace {

TEST(LoaderEventSocket, SendsATooLongEventWithoutItsArguments) {
  const Connection pair = Connection::messagePair();
  constexpr int kRoom = 8192;
  ASSERT_EQ(::setsockopt(pair.second.get(), SOL_SOCKET, SO_SNDBUF, &kRoom, sizeof kRoom), 0);
  EventSocket events(pair.second.get());
  const auto received = [&](std::size_t length) {
    events.receive({.event = LoaderEvent::kCall,
                    .method = "-[A b:]",
                    .arguments = std::vector<std::string>{std::string(length, 'a')},
                    .result = "5"});
    std::string packet(std::size_t{1} << 18U, '\0');
    const ssize_t size = ::recv(pair.first.get(), packet.data(), packet.size(), MSG_DONTWAIT);
    return decodeJSON<LoaderEvent>(packet.substr(0, size < 0 ? 0 : static_cast<std::size_t>(size)));
  };
  EXPECT_EQ(received(1000).arguments->front().size(), 1000U);
  const LoaderEvent rest = received(100000);
  EXPECT_EQ(rest.method, "-[A b:]");
  EXPECT_FALSE(rest.arguments || rest.result);
}

}  // namespace
}  // namespace tavlen::loader
