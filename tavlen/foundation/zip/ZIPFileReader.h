#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/zip/ZIPArchive.h"

namespace tavlen {

/// Reads single files of an archive from an untrusted source.
///
/// Only what is asked for is judged, by the rules and limits of ZIPArchive: the archive may hold
/// links, and entries that unzipItem() would refuse. Its directory must be sound, though, and have
/// no more entries than the limit. All calls but names() block. Errors are ZIPError, and
/// std::system_error with the path. Threads: one object one thread at a time.
class TAVLEN_API ZIPFileReader {
 public:
  /// Reads the directory of `archive`.
  explicit ZIPFileReader(const std::filesystem::path& archive,
                         const ZIPArchive::Limits& limits = {});
  ZIPFileReader(const ZIPFileReader&) = delete;
  ZIPFileReader& operator=(const ZIPFileReader&) = delete;
  ~ZIPFileReader();

  /// The names of the regular files, in the directory's order. Names that no file below a folder
  /// can have are left out.
  const std::vector<std::string>& names() const;

  /// The first `count` bytes of the file `name`, one of names(), or fewer where it ends. No
  /// checksum is verified.
  std::string firstBytes(const std::string& name, std::size_t count);

  /// Unpacks the files `names`, each one of names(), under their names into the new folder
  /// `destination`, as unzipItem() does. A given `progress` gets its units, in bytes; cancelling it
  /// ends the work with ECANCELED.
  void unpack(const std::vector<std::string>& names, const std::filesystem::path& destination,
              Progress* progress = nullptr);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace tavlen
