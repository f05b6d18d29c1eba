#pragma once

#include <filesystem>
#include <string_view>

/// The folder that contains all stored tweaks and collections. Threads: any.
namespace tavlen::TweaksDirectory {

/// kTweaksDir under the device root. It need not exist.
std::filesystem::path url();

/// Creates url() and its parents if they are missing, and returns url(). Throws std::system_error.
std::filesystem::path create();

/// An unused path in url(): a new UUID followed by `suffix`. Creates nothing.
std::filesystem::path uniqueURL(std::string_view suffix = {});

}  // namespace tavlen::TweaksDirectory
