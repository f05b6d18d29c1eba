#pragma once

#include <filesystem>
#include <string_view>

#include "tavlen/foundation/base/API.h"

/// The folder that contains all stored tweaks and collections. Threads: any.
namespace tavlen::TweaksDirectory {

/// kTweaksDir under the device root. It need not exist.
TAVLEN_API std::filesystem::path url();

/// Creates url() and its parents if they are missing, and returns url(). Throws std::system_error.
TAVLEN_API std::filesystem::path create();

/// An unused path in url(): a new UUID followed by `suffix`. Creates nothing.
TAVLEN_API std::filesystem::path uniqueURL(std::string_view suffix = {});

}  // namespace tavlen::TweaksDirectory
