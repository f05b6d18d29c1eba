#include "tavlen/introspection/RemoteClassParser.h"

#include "tavlen/introspection/RemoteDump.h"
#include "tavlen/introspection/TessaloopInterface.h"

namespace tavlen {

RemoteClassParser::Error RemoteClassParser::Error::failed() {
  return Error({"remote_class_parser.error.failed", "Remote dump failed"});
}

ClassParser::Classes RemoteClassParser::parseBelow(const std::shared_ptr<Progress>& parent,
                                                   const Executable& executable) const {
  const auto request = &invokeTessaloop;
  return dumpRemotely(executable, parent, request);
}

}  // namespace tavlen
