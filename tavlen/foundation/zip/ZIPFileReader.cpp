#include "tavlen/foundation/zip/ZIPFileReader.h"

#include <sys/stat.h>

#include <array>
#include <cstdint>
#include <limits>
#include <unordered_map>
#include <utility>

#include "tavlen/foundation/files/RandomAccessFile.h"
#include "tavlen/foundation/zip/ZIPError.h"
#include "tavlen/foundation/zip/detail/ZIPDirectory.h"
#include "tavlen/foundation/zip/detail/ZIPEntryName.h"
#include "tavlen/foundation/zip/detail/ZIPReader.h"
#include "tavlen/foundation/zip/detail/ZIPUnpacking.h"

namespace tavlen {

namespace {

/// For files whose sizes do not matter yet.
constexpr ZIPArchive::Limits kNoLimits = [] {
  constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();
  return ZIPArchive::Limits{.entries = kMost,
                            .entryBytes = kMost,
                            .archiveBytes = kMost,
                            .ratio = kMost,
                            .ratioFreeBytes = kMost};
}();

bool isNamedFile(const ZIPEntry& entry) {
  const std::uint32_t kind = entry.mode & S_IFMT;
  if (entry.isFolder() || (kind != 0 && kind != S_IFREG)) return false;
  try {
    validateZIPName(entry.name);
  } catch (const ZIPError&) {
    return false;
  }
  return true;
}

}  // namespace

struct ZIPFileReader::State {
  State(const std::filesystem::path& archive, const ZIPArchive::Limits& givenLimits)
      : limits(givenLimits),
        file(archive),
        listing(listZIPDirectory(file, limits)),
        reader(file, listing.entries) {
    for (std::size_t i = 0; i < listing.entries.size(); ++i) {
      const ZIPEntry& entry = listing.entries[i];
      if (!isNamedFile(entry)) continue;
      const auto [place, isNew] = places.emplace(entry.name, i);
      if (isNew) {
        names.push_back(entry.name);
      } else {
        place->second = kAmbiguous;
      }
    }
  }

  std::size_t placeOf(const std::string& name) const {
    const std::size_t place = places.at(name);
    if (place == kAmbiguous) throw ZIPError(ZIPError::Case::duplicateName, name);
    return place;
  }

  /// For a name that several entries have.
  static constexpr std::size_t kAmbiguous = static_cast<std::size_t>(-1);

  ZIPArchive::Limits limits;
  RandomAccessFile file;
  ZIPListing listing;
  ZIPReader reader;
  std::vector<std::string> names;
  std::unordered_map<std::string, std::size_t> places;
};

ZIPFileReader::ZIPFileReader(const std::filesystem::path& archive, const ZIPArchive::Limits& limits)
    : state_(std::make_unique<State>(archive, limits)) {}

ZIPFileReader::~ZIPFileReader() = default;

const std::vector<std::string>& ZIPFileReader::names() const { return state_->names; }

std::string ZIPFileReader::firstBytes(const std::string& name, std::size_t count) {
  const std::array place = {state_->placeOf(name)};
  validateZIPEntries(state_->file, state_->listing, place, kNoLimits);
  return state_->reader.readFirst(place.front(), count);
}

void ZIPFileReader::unpack(const std::vector<std::string>& names,
                           const std::filesystem::path& destination, Progress* progress) {
  std::vector<std::size_t> chosen;
  chosen.reserve(names.size());
  for (const std::string& name : names) chosen.push_back(state_->placeOf(name));
  validateZIPEntries(state_->file, state_->listing, chosen, state_->limits);
  unpackZIPEntries(state_->reader, state_->listing.entries, std::move(chosen), destination,
                   progress);
}

}  // namespace tavlen
