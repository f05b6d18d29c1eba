#include "tavlen/introspection/remote/RemoteClassParser.h"

#include "tavlen/introspection/remote/TessaloopInterface.h"
#include "tavlen/introspection/remote/detail/RemoteDump.h"

namespace tavlen {

RemoteClassParser::Error RemoteClassParser::Error::failed() {
  return {Case::failed, {"remote_class_parser.error.failed", "Remote dump failed"}};
}

ClassParser::Classes RemoteClassParser::parseBelow(const std::shared_ptr<Progress>& parent,
                                                   const Executable& executable) const {
  const auto request = &invokeTessaloop;
  return dumpRemotely(executable, parent, request);
}

}  // namespace tavlen
