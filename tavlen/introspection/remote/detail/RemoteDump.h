#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/foundation/tasks/Progress.h"
#include "tavlen/introspection/classes/ClassParser.h"

namespace tavlen {

/// Makes a request for a dump; has the signature of invokeTessaloop().
using DumpRequest = FunctionRef<std::optional<std::string>(
    const std::string& bundleID, const std::string& imagePath, bool isMainExecutable,
    const std::function<void(double fraction)>& progress)>;

/// Implements RemoteClassParser with `request`: asks for the dump, reads the archive, deletes its
/// folder. `parent` may be null.
ClassParser::Classes dumpRemotely(const Executable& executable,
                                  const std::shared_ptr<Progress>& parent, DumpRequest request);

}  // namespace tavlen
