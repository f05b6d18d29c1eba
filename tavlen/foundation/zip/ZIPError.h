#pragma once

#include <cstdint>
#include <string>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/errors/CasedError.h"

namespace tavlen {

/// The reasons to refuse an archive or an item.
enum class ZIPErrorCase {
  damagedArchive,   ///< the end record or the directory is malformed
  absoluteName,     ///< starts at the root or with a drive
  parentReference,  ///< has a component ".."
  invalidName,  ///< empty or too long; has a backslash, a NUL, or a component that is "." or empty
  duplicateName,  ///< equal to another name after Unicode normalization
  caseConflict,   ///< equal to another name on this volume
  fileAsFolder,   ///< a file by one entry, a folder by another or by its name
  symbolicLink,
  specialFile,       ///< a device, a pipe or a socket
  recordMismatch,    ///< the local record differs from the directory's
  overlappingEntry,  ///< its data overlaps another's, or the directory
  checksumMismatch,
  sizeMismatch,      ///< longer or shorter than recorded
  damagedData,       ///< not a valid deflate stream
  unsupportedEntry,  ///< encrypted, or not stored or deflated
  tooManyEntries,
  entryTooLarge,
  archiveTooLarge,
  ratioTooHigh,
};

/// The error of an archive that is not read, or of a folder that is not archived. All cases but
/// `damagedArchive` and `tooManyEntries` name the entry at fault, as in the archive; of two
/// conflicting entries, the later one (for caseConflict, in the order of the names).
class TAVLEN_API ZIPError : public CasedError<ZIPErrorCase> {
 public:
  /// `detail` replaces the placeholder of the case's text: the entry's name; for damagedArchive the
  /// fault, for tooManyEntries the limit.
  ZIPError(Case which, std::string detail);
  /// For entryTooLarge, archiveTooLarge and ratioTooHigh, which name the limit, too.
  ZIPError(Case which, std::string entry, std::uint64_t limit);
};

}  // namespace tavlen
