#include "kvfileops/TrustedFolder.h"

#include <cerrno>
#include <climits>
#include <deque>
#include <utility>

#include "kvfileops/CallerRights.h"
#include "kvfileops/OpenEntry.h"
#include "kvfileops/Refusal.h"
#include "tavlen/foundation/base/SystemError.h"

namespace tavlen::fileops {

namespace {

bool mayOnlyRootWrite(const struct stat& folder) {
  return folder.st_uid == 0 && (folder.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

std::string readLink(int folder, const std::string& name, const std::filesystem::path& shown) {
  std::string target(PATH_MAX, '\0');
  const ssize_t size = ::readlinkat(folder, name.c_str(), target.data(), target.size());
  if (size < 0) throwSystemError(shown);
  target.resize(static_cast<std::size_t>(size));
  return target;
}

}  // namespace

Links linksToFollow() { return hasLentRights() ? Links::ofRoot : Links::all; }

TrustedFolder::TrustedFolder(const std::filesystem::path& path, Links links) {
  if (!path.is_absolute()) throw Refusal(path, "is no absolute path");
  append(FileDescriptor::open("/", kOpenToPass), {});
  go(path, links);
}

std::filesystem::path TrustedFolder::path() const {
  std::filesystem::path path = "/";
  for (const Step& step : steps_) path /= step.name;
  for (const std::string& name : missing_) path /= name;
  return path;
}

void TrustedFolder::make(Owner owner) {
  const std::filesystem::path shown = path();
  while (!missing_.empty()) {
    const std::string name = missing_.front();
    const Owner ofThis = missing_.size() == 1 ? owner : Owner::program;
    FileDescriptor folder = makeFolder(descriptor().get(), name, ofThis, shown);
    missing_.erase(missing_.begin());
    append(std::move(folder), name);
  }
}

void TrustedFolder::go(const std::filesystem::path& path, Links links) {
  constexpr int kMostLinks = 40;
  int followed = 0;
  const std::filesystem::path relative = path.relative_path();
  std::deque<std::filesystem::path> rest(relative.begin(), relative.end());
  while (!rest.empty()) {
    const std::string name = std::move(rest.front()).string();
    rest.pop_front();
    if (name.empty() || name == ".") continue;
    if (name == "..") {
      goBack();
    } else if (!enter(name)) {
      const std::filesystem::path target = targetOf(name, links);
      if (++followed > kMostLinks) throwSystemError(ELOOP, path);
      if (target.is_absolute()) steps_.erase(steps_.begin() + 1, steps_.end());
      const std::filesystem::path components = target.relative_path();
      rest.insert(rest.begin(), components.begin(), components.end());
    }
  }
}

void TrustedFolder::goBack() {
  if (!missing_.empty()) {
    missing_.pop_back();
  } else if (steps_.size() > 1) {
    steps_.pop_back();
  }
}

bool TrustedFolder::enter(const std::string& name) {
  if (missing_.empty()) {
    FileDescriptor folder =
        FileDescriptor::tryOpenAt(descriptor().get(), name.c_str(), kOpenToPass);
    if (folder) {
      append(std::move(folder), name);
      return true;
    }
    // What the systems say of a link that is not to be followed, or of a file.
    if (errno == ENOTDIR || errno == ELOOP) return false;
    if (errno != ENOENT) throwSystemError(path() / name);
  }
  missing_.push_back(name);
  return true;
}

void TrustedFolder::append(FileDescriptor folder, const std::string& name) {
  const bool isReachedThroughRoots = steps_.empty() || steps_.back().isRootsAlone;
  const bool isRootsAlone = isReachedThroughRoots && mayOnlyRootWrite(folder.status(path() / name));
  steps_.push_back({std::move(folder), name, isRootsAlone});
}

std::filesystem::path TrustedFolder::targetOf(const std::string& name, Links links) const {
  const std::filesystem::path shown = path() / name;
  const struct stat status = statusOfEntry(descriptor().get(), name, shown);
  if (!S_ISLNK(status.st_mode)) throwSystemError(ENOTDIR, shown);
  // Where only root may write, the link that is read is the link that was looked at.
  if (links == Links::ofRoot && (status.st_uid != 0 || !steps_.back().isRootsAlone)) {
    throw Refusal(shown,
                  "is a link that is not followed: others than root own it or may replace it");
  }
  return readLink(descriptor().get(), name, shown);
}

}  // namespace tavlen::fileops
