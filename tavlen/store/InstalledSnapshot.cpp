#include "tavlen/store/InstalledSnapshot.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "tavlen/device/DevicePaths.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/device/InstalledRecords.h"

namespace tavlen {

namespace {

namespace fs = std::filesystem;

}  // namespace

InstalledSnapshot InstalledSnapshot::take(const InstalledSnapshot& before) {
  InstalledSnapshot snapshot;
  const fs::path installed = DeviceRoot::shared().resolve(kInstalledTweaksDir);
  snapshot.folders_.push_back(existingFolder(installed));
  std::error_code error;
  fs::directory_iterator entry(installed, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    std::string bundleID = entry->path().filename().string();
    if (bundleID.starts_with('.')) continue;
    snapshot.folders_.push_back(linkTarget(entry->path()));
    const std::optional<FileStamp> stamp = stampOf(entry->path() / kTweakInfoFilename);
    if (!stamp) continue;
    const auto known = before.records_.find(bundleID);
    if (known != before.records_.end() && known->second.stamp == *stamp) {
      snapshot.records_.insert(*known);
    } else if (const auto record = InstalledRecords::record(bundleID); record && record->tweakID) {
      snapshot.records_.try_emplace(std::move(bundleID), Record{*stamp, *record->tweakID});
    }
  }
  std::sort(snapshot.folders_.begin(), snapshot.folders_.end());
  return snapshot;
}

std::vector<InstalledSnapshot::Change> InstalledSnapshot::changesSince(
    const InstalledSnapshot& before) const {
  std::vector<Change> changes;
  for (const auto& [bundleID, record] : before.records_) {
    if (!records_.contains(bundleID)) changes.push_back({bundleID, record.id, false});
  }
  for (const auto& [bundleID, record] : records_) {
    const auto former = before.records_.find(bundleID);
    if (former != before.records_.end() && former->second.stamp == record.stamp) continue;
    changes.push_back({bundleID, record.id, true});
  }
  std::sort(changes.begin(), changes.end(),
            [](const Change& left, const Change& right) { return left.bundleID < right.bundleID; });
  return changes;
}

}  // namespace tavlen
