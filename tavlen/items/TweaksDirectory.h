#pragma once

#include <filesystem>
#include <string_view>

/// The folder that all stored tweaks and collections lie in. Threads: any.
namespace tavlen::TweaksDirectory {

/// kTweaksDir below the device root; it need not exist.
std::filesystem::path url();

/// url(), made with its parents where it is missing. Throws std::system_error.
std::filesystem::path create();

/// A fresh UUID's text with `suffix` in url(), at which nothing exists.
std::filesystem::path uniqueURL(std::string_view suffix = {});

}  // namespace tavlen::TweaksDirectory
