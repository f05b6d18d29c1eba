#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "cli/classes/TimeLimit.h"
#include "tavlen/foundation/tasks/Progress.h"
#include "tavlen/introspection/classes/ClassParser.h"

namespace tavlen::cli {

/// How dumpInChild() works.
struct ChildDumpOptions {
  OptionalLimit timeout;                 ///< for the whole dump
  std::shared_ptr<Progress> progress;    ///< gets one unit at the end, and can cancel; may be null
  std::optional<std::string> className;  ///< only the first class with this name, if there is one
};

/// The classes that DynamicClassParser reads from `image`, an absolute path. The image is loaded
/// into a child process, so nothing that its code does affects this one: it may end its process,
/// print, or hang. What it prints, and the child's log, is logged. None of the classes is null.
///
/// The child is this program, started again (dumpIfChild()), which is always at hand and has the
/// same parser. The child and the processes in its group end with the dump, and with this process
/// however that ends; a process that the image moves to a group of its own does not.
///
/// Throws DynamicClassParser::Error if the image cannot be loaded; std::system_error with
/// std::errc::operation_canceled when the progress is cancelled; and std::runtime_error, without
/// the image's name, when the dump takes longer than its limit, the image ends the process, or the
/// child hands over anything but an archive of classes of at most limits::kDumpBytes.
ClassParser::Classes dumpInChild(const std::filesystem::path& image,
                                 const ChildDumpOptions& options);

}  // namespace tavlen::cli
