#pragma once

#include <memory>

#include "tavlen/foundation/errors/CasedError.h"
#include "tavlen/introspection/classes/ClassParser.h"

namespace tavlen {

/// Reads the classes of an image of an app from inside the app: relaunches it with the dump agent
/// and takes the agent's archive. For what only the running app can tell.
///
/// The app and the agent go by the device's names for files; DeviceRoot tells where those are here,
/// so an image outside the device root cannot be dumped. An archive larger than 256 MiB, or that is
/// no regular file, is none.
///
/// Blocks, without limit where the agent never ends, until cancelTessaloopIfNeeded(). A call ends
/// the one before it. Throws Error::failed, and std::system_error where the archive was read, but
/// its folder must not or cannot be deleted. An agent that reports a fraction that is no number, or
/// beyond 64 bits as a percentage, ends the process.
class RemoteClassParser : public ClassParser {
 public:
  enum class ErrorCase { failed };
  class Error;

 private:
  Classes parseBelow(const std::shared_ptr<Progress>& parent,
                     const Executable& executable) const override;
};

class RemoteClassParser::Error : public CasedError<RemoteClassParser::ErrorCase> {
 public:
  static Error failed();

 private:
  using CasedError::CasedError;
};

}  // namespace tavlen
