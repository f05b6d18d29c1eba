#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string_view>

/// A library that stands between a program and its C library: it counts the program's file calls
/// below one folder, those of other libraries too, writes them down, and lets chosen ones fail.
///
/// It works in every program that it is linked to, before the C library, or preloaded into. What
/// the C library calls inside itself it does not see, so it stands in for the whole of such
/// functions (fopen, remove, mkdtemp).
namespace tavlen::faults {

enum class Call : std::uint8_t {
  open,    ///< of an existing file, or folder, for reading
  create,  ///< or open for writing
  read,    ///< bytes of a file, or names of a folder
  write,
  sync,
  close,  ///< of what was open for writing
  truncate,
  // No call from here on is interrupted.
  rename,
  link,
  makeFolder,
  remove,
  changeMode,
};

enum class Effect : std::uint8_t {
  none,
  fail,        ///< nothing is done, but for close, and the error is reported
  shorten,     ///< half is written; what is hit after that fails with ENOSPC
  killBefore,  ///< the process ends where it stands
  killAfter,
};

inline constexpr std::uint32_t kForEver = UINT32_MAX;

struct Plan {
  Effect effect = Effect::none;
  int error = 0;  ///< of Effect::fail; only calls that can report it are counted
  std::uint32_t first = 1;
  std::uint32_t times = 1;  ///< how many calls are hit, from the first on
};

struct Record {
  Call call = Call::open;
  int error = 0;  ///< 0 where it worked
  std::array<char, 400> path{};
  std::array<char, 400> newPath{};  ///< of rename and link
};

/// To lie in memory that is shared with whoever reads it once the process is dead. Zeroed memory is
/// an empty one.
struct Log {
  static constexpr std::size_t kMostRecords = 4000;

  std::atomic<std::uint32_t> calls;  ///< that the plan's effect could have hit
  std::atomic<std::uint32_t> hits;
  std::atomic<std::uint32_t> count;  ///< of records; what goes beyond the most is not kept
  std::array<Record, kMostRecords> records;
};

/// While it lives, calls below `folder`, an absolute path without links, go by `plan` and into
/// `log`. One at a time, made while no other thread runs.
class Armed {
 public:
  Armed(std::string_view folder, const Plan& plan, Log& log);
  Armed(const Armed&) = delete;
  Armed& operator=(const Armed&) = delete;
  ~Armed();
};

}  // namespace tavlen::faults
