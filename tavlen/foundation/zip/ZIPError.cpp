#include "tavlen/foundation/zip/ZIPError.h"

#include <utility>

#include "tavlen/foundation/base/FatalError.h"

namespace tavlen {

namespace {

LocalizedText textOf(ZIPError::Case which) {
  using Case = ZIPError::Case;
  switch (which) {
    case Case::damagedArchive:
      return {"zip_error.damaged_archive", "The archive is damaged: %@"};
    case Case::absoluteName:
      return {"zip_error.absolute_name", "The entry '%@' has an absolute name"};
    case Case::parentReference:
      return {"zip_error.parent_reference", "The entry '%@' leads out of its folder"};
    case Case::invalidName:
      return {"zip_error.invalid_name", "The entry '%@' has an invalid name"};
    case Case::duplicateName:
      return {"zip_error.duplicate_name", "The entry '%@' appears twice"};
    case Case::caseConflict:
      return {"zip_error.case_conflict",
              "'%@' and another entry have the same name on this volume"};
    case Case::fileAsFolder:
      return {"zip_error.file_as_folder", "The entry '%@' is both a file and a folder"};
    case Case::symbolicLink:
      return {"zip_error.symbolic_link", "The entry '%@' is a symbolic link"};
    case Case::specialFile:
      return {"zip_error.special_file", "The entry '%@' is neither a file nor a folder"};
    case Case::recordMismatch:
      return {"zip_error.record_mismatch", "The two records of the entry '%@' differ"};
    case Case::overlappingEntry:
      return {"zip_error.overlapping_entry", "The entry '%@' overlaps another"};
    case Case::checksumMismatch:
      return {"zip_error.checksum_mismatch", "The checksum of the entry '%@' is wrong"};
    case Case::sizeMismatch:
      return {"zip_error.size_mismatch", "The size of the entry '%@' is wrong"};
    case Case::damagedData:
      return {"zip_error.damaged_data", "The data of the entry '%@' is damaged"};
    case Case::unsupportedEntry:
      return {"zip_error.unsupported_entry",
              "The entry '%@' is encrypted or compressed by an unknown method"};
    case Case::tooManyEntries:
      return {"zip_error.too_many_entries", "There are more than %@ entries"};
    case Case::entryTooLarge:
      return {"zip_error.entry_too_large", "The entry '%@' has more than %@ bytes"};
    case Case::archiveTooLarge:
      return {"zip_error.archive_too_large",
              "From the entry '%@' on the archive unpacks to more than %@ bytes"};
    case Case::ratioTooHigh:
      return {"zip_error.ratio_too_high",
              "At the entry '%@' the archive unpacks to more than %@ times its size"};
  }
  fatalError("ZIPError: a case without a text");
}

}  // namespace

ZIPError::ZIPError(Case which, std::string detail)
    : CasedError(which, textOf(which), {std::move(detail)}) {}

ZIPError::ZIPError(Case which, std::string entry, std::uint64_t limit)
    : CasedError(which, textOf(which), {std::move(entry), std::to_string(limit)}) {}

}  // namespace tavlen
