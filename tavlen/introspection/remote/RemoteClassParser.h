#pragma once

#include <memory>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/errors/CasedError.h"
#include "tavlen/introspection/classes/ClassParser.h"

namespace tavlen {

/// Reads the classes of an app's image from inside the app: relaunches the app with the dump agent
/// in it and reads the agent's archive. Needed for information that only the running app has.
///
/// The app and the agent use paths of the device; DeviceRoot translates them, so an image outside
/// the device root cannot be dumped. An archive that is larger than 256 MiB or not a regular file
/// is refused.
///
/// Blocks, without a time limit if the agent never ends, until cancelTessaloopIfNeeded();
/// cancelling a progress does not end it. A call cancels the one before it. Throws Error::failed,
/// and std::system_error when the archive was read but its folder cannot or must not be deleted. An
/// agent that reports NaN, or a fraction whose percentage does not fit into 64 bits, ends the
/// process.
class TAVLEN_API RemoteClassParser : public ClassParser {
 public:
  /// The cases of Error.
  enum class ErrorCase { failed };
  class Error;

 private:
  Classes parseBelow(const std::shared_ptr<Progress>& parent,
                     const Executable& executable) const override;
};

/// The error of a failed dump.
class TAVLEN_API RemoteClassParser::Error : public CasedError<RemoteClassParser::ErrorCase> {
 public:
  /// The dump failed; the log says why.
  static Error failed();

 private:
  using CasedError::CasedError;
};

}  // namespace tavlen
