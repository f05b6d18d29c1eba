#pragma once

#include <cstdint>
#include <string>

#include "tavlen/foundation/errors/CasedError.h"

namespace tavlen {

enum class ZIPErrorCase {
  damagedArchive,   ///< the end record or the directory
  absoluteName,     ///< from the root, or from a drive
  parentReference,  ///< with a component ".."
  invalidName,      ///< empty, too long, with a backslash, NUL, "." or nothing between slashes
  duplicateName,    ///< there already, after Unicode normalization
  caseConflict,     ///< there already, for the volume at hand
  fileAsFolder,     ///< one of the two by its name, the other by its kind or another's name
  symbolicLink,
  specialFile,       ///< a device, a pipe or a socket
  recordMismatch,    ///< the record before the data is not that of the directory
  overlappingEntry,  ///< its data lies where another's does, or the directory
  checksumMismatch,
  sizeMismatch,      ///< longer or shorter than its record says
  damagedData,       ///< what is no deflate stream
  unsupportedEntry,  ///< encrypted, or by another method than stored and deflate
  tooManyEntries,
  entryTooLarge,
  archiveTooLarge,
  ratioTooHigh,
};

/// Why an archive is not read, or a folder not made into one. Every case but `damagedArchive` and
/// `tooManyEntries` names the entry at fault, by its name in the archive; of two entries that do
/// not go together, the later one (for caseConflict, by the order of the names).
class ZIPError : public CasedError<ZIPErrorCase> {
 public:
  /// `detail` is what the case's text names: the entry; for damagedArchive what is wrong, for
  /// tooManyEntries how many there may be.
  ZIPError(Case which, std::string detail);
  /// For entryTooLarge, archiveTooLarge and ratioTooHigh, which name the limit, too.
  ZIPError(Case which, std::string entry, std::uint64_t limit);
};

}  // namespace tavlen
