#include "tavlen/foundation/files/DescriptorSnapshot.h"

#include <fcntl.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace tavlen {

namespace {

/// Without that of the listing itself, which is closed when the others are looked at.
std::optional<std::vector<int>> openDescriptors() {
  namespace fs = std::filesystem;
  std::vector<int> open;
  std::error_code error;
  for (fs::directory_iterator each("/dev/fd", error); !error && each != fs::directory_iterator();
       each.increment(error))
    open.push_back(std::atoi(each->path().filename().c_str()));  // NOLINT(cert-err34-c): numbers
  // An incomplete list would take standard streams for the library's.
  if (error) return std::nullopt;
  std::erase_if(open, [](int descriptor) { return ::fcntl(descriptor, F_GETFD) < 0; });
  std::sort(open.begin(), open.end());
  return open;
}

}  // namespace

DescriptorSnapshot::DescriptorSnapshot() : open_(openDescriptors()) {}

void DescriptorSnapshot::hideOthers() const {
  const auto now = open_ ? openDescriptors() : std::nullopt;
  if (!now) return;
  for (const int descriptor : *now) {
    if (!std::binary_search(open_->begin(), open_->end(), descriptor))
      (void)::fcntl(descriptor, F_SETFD, FD_CLOEXEC);
  }
}

}  // namespace tavlen
