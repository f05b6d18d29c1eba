#pragma once

#include <cstddef>
#include <cstdint>

/// The limits of what is read of documents, archives, property lists and pictures, and the reasons
/// for them. These come from other people, and can ask for far more memory or time than their size
/// suggests. An error names the limit that it is about; a picture beyond one is not decoded.
///
/// Limits that belong to a format, such as the longest name in an archive, are next to the code
/// that reads the format.
namespace tavlen::limits {

inline constexpr std::size_t kMiB = std::size_t{1} << 20;
inline constexpr std::uint64_t kGiB = std::uint64_t{1} << 30;

// The documents of the store: Manifest.json, and the documents of collections. Documents that are
// written are held to the same limits, so that none is stored that cannot be opened.

/// Bytes of a document: a manifest of 20,000 hooks with three short parameters each has 4.9 MB.
inline constexpr std::size_t kDocumentBytes = 16 * kMiB;
/// Hooks of a tweak, absent ones included. A tweak that hooked every class of a large app would
/// have some ten thousand.
inline constexpr std::size_t kHooks = 100'000;
/// Values in a JSON document, elements and members of objects, where they are read. A hook with
/// three parameters has fourteen.
inline constexpr std::size_t kJSONValues = 1'000'000;
/// Containers of JSON in one another, as many as the platform reads.
inline constexpr std::size_t kJSONDepth = 512;

// Property lists and keyed archives. Values can be shared there, so a short list can stand for a
// long one.

/// Memory for what is made of a document or a list: so much for any, and so much for each of its
/// bytes. An array of empty texts in JSON comes closest, with three bytes for a text of 32 in an
/// array that grows.
inline constexpr std::size_t kDecodedBytes = kMiB;
inline constexpr std::size_t kDecodedBytesPerByte = 32;
/// What the records of an archive would take if each were written where it is referenced, as JSON
/// does: the bytes of their texts and keys, and four for each value. So much for any archive, a
/// class with 200 methods of a type of 149 kB; and so much for each byte of one, many times what
/// classes take that share their encodings.
inline constexpr std::size_t kExpandedBytes = 32 * kMiB;
inline constexpr std::size_t kExpandedBytesPerByte = 64;
inline constexpr std::size_t kExpandedBytesPerValue = 4;
/// Looks at values of a list, beyond a few at each: some milliseconds.
inline constexpr std::size_t kSharedVisits = 1'000'000;
/// Containers in one another, which ends a cycle; as for JSON.
inline constexpr std::size_t kPropertyListDepth = 512;
/// Bytes of an app's Info.plist: thousands of times what apps have.
inline constexpr std::size_t kInfoPlistBytes = 16 * kMiB;
/// Bytes of the record of an installed tweak, which has some hundred.
inline constexpr std::size_t kInstalledRecordBytes = kMiB;
/// Bytes of the archive of an app's classes: a hundred times what large apps need.
inline constexpr std::size_t kDumpBytes = 256 * kMiB;

// Pictures.

/// Bytes of an icon's file: a quarter of the pixels of the largest picture.
inline constexpr std::size_t kIconFileBytes = 64 * kMiB;
/// Pixels along a side, and in all: 256 MiB of memory. Icons have 1024 a side.
inline constexpr std::uint32_t kImageSide = 16'384;
inline constexpr std::uint64_t kImagePixels = std::uint64_t{1} << 26;
/// Scans of a progressive JPEG. Encoders write about ten. A valid file may have thousands, of a few
/// bytes each, and each costs a walk over the whole picture.
inline constexpr int kJPEGScans = 32;
/// Memory for the coefficients of a progressive JPEG.
inline constexpr std::size_t kJPEGMemory = 256 * kMiB;

// Archives.

/// Files and folders, those included that are only part of the names of others.
inline constexpr std::uint64_t kArchiveEntries = 100'000;
/// Bytes of the directory of an archive, which is read whole: 300 for each entry.
inline constexpr std::uint64_t kArchiveDirectoryBytes = 32 * kMiB;
/// Bytes of one unpacked entry, and of all, on the disk. An entry of more needs 64-bit records.
inline constexpr std::uint64_t kArchiveEntryBytes = 4 * kGiB;
inline constexpr std::uint64_t kArchiveBytes = 8 * kGiB;
/// Unpacked bytes for each compressed one, looked at beyond a number of bytes that any archive may
/// unpack to. Deflate reaches 1032; a manifest of alike hooks has 25.
inline constexpr std::uint64_t kArchiveRatio = 200;
inline constexpr std::uint64_t kArchiveRatioFreeBytes = 64 * kMiB;

}  // namespace tavlen::limits
