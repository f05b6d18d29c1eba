#pragma once

#include <memory>

#include "tavlen/foundation/LocalizedError.h"
#include "tavlen/introspection/ClassParser.h"

namespace tavlen {

/// Reads the classes of an image of an app from inside the app: relaunches it with the dump agent
/// and takes the agent's archive. For what only the running app can tell.
class RemoteClassParser : public ClassParser {
 public:
  class Error;

 private:
  Classes parseBelow(const std::shared_ptr<Progress>& parent,
                     const Executable& executable) const override;
};

class RemoteClassParser::Error : public LocalizedError {
 public:
  enum class Case { failed };

  static Error failed();

  Case which() const { return Case::failed; }

 private:
  using LocalizedError::LocalizedError;
};

}  // namespace tavlen
