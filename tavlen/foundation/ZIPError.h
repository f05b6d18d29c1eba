#pragma once

#include <string>
#include <vector>

#include "tavlen/foundation/LocalizedError.h"

namespace tavlen {

/// Why an archive is not read, or a folder not made into one. Every case but `damagedArchive` and
/// `tooManyEntries` names the entry at fault, by its name in the archive.
class ZIPError : public LocalizedError {
 public:
  enum class Case {
    damagedArchive,
    absoluteName,
    parentReference,
    invalidName,
    duplicateName,
    caseConflict,
    fileAsFolder,
    symbolicLink,
    specialFile,
    recordMismatch,
    checksumMismatch,
    sizeMismatch,
    unsupportedEntry,
    tooManyEntries,
    entryTooLarge,
    archiveTooLarge,
    ratioTooHigh,
  };

  /// `detail` is what the case's text names: the entry, or for damagedArchive what is wrong.
  ZIPError(Case which, std::string detail);

  Case which() const { return case_; }
  bool operator==(const ZIPError& other) const {
    return case_ == other.case_ && payload() == other.payload();
  }

 private:
  Case case_;
};

}  // namespace tavlen
