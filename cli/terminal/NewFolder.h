#pragma once

#include <filesystem>

#include "tavlen/foundation/base/FunctionRef.h"

namespace tavlen::cli {

/// Lets `write` fill an empty draft, which becomes `folder` when it is whole; the folders that lead
/// there are made. A failure leaves nothing of them. Throws std::system_error, with ENOTDIR if
/// `folder` exists, and as callInDraft().
void makeFolder(const std::filesystem::path& folder,
                FunctionRef<void(const std::filesystem::path& draft)> write);

/// Calls `write`. Errors of the file system that name a file in `draft`, a path without links,
/// become std::system_error with its path in `folder`; others pass through.
void callInDraft(const std::filesystem::path& draft, const std::filesystem::path& folder,
                 FunctionRef<void()> write);

}  // namespace tavlen::cli
