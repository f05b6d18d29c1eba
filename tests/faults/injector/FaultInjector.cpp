#include "tests/faults/injector/FaultInjector.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <string>

namespace tavlen::faults {

namespace {

using Word = long;
static_assert(sizeof(Word) == sizeof(void*));

struct State {
  std::string folder;
  Plan plan;
  Log* log = nullptr;  ///< none while disarmed
};

State& state() {
  // Called when the process ends, too.
  static State& shared = *new State;
  return shared;
}

bool isArmed() { return state().log != nullptr; }

std::string descriptorPath(int descriptor) {
  std::error_code none;
  return std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor), none);
}

std::string absolute(Word folder, Word name) {
  const auto* const path = reinterpret_cast<const char*>(name);
  if (path == nullptr || *path == '/') return path == nullptr ? "" : path;
  const int descriptor = static_cast<int>(folder);
  std::error_code none;
  return (descriptor == AT_FDCWD ? std::filesystem::current_path(none).string()
                                 : descriptorPath(descriptor)) +
         "/" + path;
}

bool isBelow(const std::string& path) {
  const std::string& folder = state().folder;
  return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

struct Subject {
  Call call;
  std::string path;
  std::string newPath = {};
  std::size_t size = 0;  ///< of what is written
  /// By the C library's streams, or by calls that are documented to know no interruption.
  bool isInterruptible = true;
  bool givesPointer = false;  ///< null where it fails

  bool counts() const { return isArmed() && (isBelow(path) || isBelow(newPath)); }
  bool changesDisk() const {
    return call != Call::open && call != Call::read && call != Call::close;
  }
};

bool canReport(int error, const Subject& subject) {
  switch (error) {
    case EINTR:
      return subject.isInterruptible && subject.call <= Call::truncate;
    case ENOSPC:
      return subject.call != Call::open && subject.call != Call::read &&
             subject.call != Call::remove && subject.call != Call::changeMode;
    case EROFS:
      return subject.changesDisk() && subject.call != Call::sync;
    default:
      return true;
  }
}

bool canBeHit(const Subject& subject) {
  switch (state().plan.effect) {
    case Effect::none:
      return false;
    case Effect::fail:
      return canReport(state().plan.error, subject);
    case Effect::shorten:
      return subject.call == Call::write && subject.size > 1;
    default:
      return subject.changesDisk();
  }
}

/// The effect on this call; counts it.
Effect decide(const Subject& subject) {
  if (!canBeHit(subject)) return Effect::none;
  const Plan& plan = state().plan;
  const std::uint32_t number = ++state().log->calls;
  if (number < plan.first || number - plan.first >= plan.times) return Effect::none;
  ++state().log->hits;
  if (plan.effect == Effect::killBefore) (void)::raise(SIGKILL);
  if (plan.effect == Effect::shorten && number > plan.first) return Effect::fail;
  return plan.effect;
}

void write(const Subject& subject, int error) {
  Log* const log = state().log;
  if (log == nullptr) return;
  const std::uint32_t index = log->count++;
  if (index >= Log::kMostRecords) return;
  Record& record = log->records.at(index);
  record.call = subject.call;
  record.error = error;
  record.path.at(subject.path.copy(record.path.data(), record.path.size() - 1)) = '\0';
  record.newPath.at(subject.newPath.copy(record.newPath.data(), record.newPath.size() - 1)) = '\0';
}

/// Makes the call, or what the plan wants instead. `proceed` is given how many bytes to write.
template <class Proceed>
Word pass(const Subject& subject, Proceed proceed) {
  if (!subject.counts()) return proceed(subject.size);
  const Effect effect = decide(subject);
  const Word failure = subject.givesPointer ? 0 : -1;
  if (effect == Effect::fail) {
    // A descriptor is closed whatever close() reports.
    if (subject.call == Call::close) proceed(0);
    const int error = state().plan.effect == Effect::fail ? state().plan.error : ENOSPC;
    write(subject, error);
    errno = error;
    return failure;
  }
  errno = 0;
  const Word result = proceed(effect == Effect::shorten ? subject.size / 2 : subject.size);
  const int error = errno;
  // Of an int, only the lower half is set.
  const bool hasFailed =
      subject.givesPointer ? result == failure : static_cast<int>(result) == failure;
  write(subject, hasFailed ? error : 0);
  if (effect == Effect::killAfter) (void)::raise(SIGKILL);
  errno = error;
  return result;
}

Subject onDescriptor(Call call, Word descriptor, Word size = 0) {
  return {call, isArmed() ? descriptorPath(static_cast<int>(descriptor)) : std::string(), "",
          static_cast<std::size_t>(size)};
}

Subject onPath(Call call, Word folder, Word path) {
  return {call, isArmed() ? absolute(folder, path) : std::string()};
}

Subject onPaths(Call call, Word folder, Word path, Word newFolder, Word newPath) {
  Subject subject = onPath(call, folder, path);
  if (isArmed()) subject.newPath = absolute(newFolder, newPath);
  return subject;
}

Subject uninterrupted(Subject subject) {
  subject.isInterruptible = false;
  return subject;
}

Subject givingPointer(Subject subject) {
  subject.givesPointer = true;
  return subject;
}

Subject onStream(Call call, Word stream, Word size = 0) {
  auto* const file = reinterpret_cast<std::FILE*>(stream);
  return uninterrupted(onDescriptor(call, file == nullptr ? -1 : ::fileno(file), size));
}

Call callOfFlags(Word flags) {
  return (flags & (O_ACCMODE | O_CREAT | O_TRUNC)) == O_RDONLY ? Call::open : Call::create;
}

Subject onStreamAt(Word path, Word mode) {
  const std::string text = reinterpret_cast<const char*>(mode);
  const bool isReading = text.starts_with('r') && text.find('+') == text.npos;
  const Call call = isReading ? Call::open : Call::create;
  return givingPointer(uninterrupted(onPath(call, AT_FDCWD, path)));
}

bool isForWriting(Word descriptor) {
  const int flags = ::fcntl(static_cast<int>(descriptor), F_GETFL);
  return flags >= 0 && (flags & O_ACCMODE) != O_RDONLY;
}

}  // namespace

Armed::Armed(std::string_view folder, const Plan& plan, Log& log) {
  state().folder = folder;
  state().plan = plan;
  state().log = &log;
}

Armed::~Armed() { state().log = nullptr; }

}  // namespace tavlen::faults

using namespace tavlen::faults;  // NOLINT(google-build-using-namespace)

/// Defines the C library's function `symbol` anew, with its arguments a to f. All are integers and
/// pointers, which come in registers, however many there are. In its body, `next` is the C
/// library's function.
#define INTERPOSE(symbol)                                                                         \
  extern "C" Word injected_##symbol(Word, Word, Word, Word, Word, Word) __asm__(#symbol);         \
  static Word next_##symbol(Word a, Word b = 0, Word c = 0, Word d = 0, Word e = 0, Word f = 0) { \
    static const auto function =                                                                  \
        reinterpret_cast<decltype(&injected_##symbol)>(::dlsym(RTLD_NEXT, #symbol));              \
    return function(a, b, c, d, e, f);                                                            \
  }                                                                                               \
  extern "C" __attribute__((visibility("default"))) Word injected_##symbol(                       \
      [[maybe_unused]] Word a, [[maybe_unused]] Word b, [[maybe_unused]] Word c,                  \
      [[maybe_unused]] Word d, [[maybe_unused]] Word e, [[maybe_unused]] Word f)

/// A function that passes on its arguments as they are, for a call on `subject`.
#define INTERPOSE_CALL(symbol, subject)                                                 \
  INTERPOSE(symbol) {                                                                   \
    return pass(subject, [=](std::size_t) { return next_##symbol(a, b, c, d, e, f); }); \
  }

/// That function and its twin for large files.
#define INTERPOSE_BOTH(symbol, subject) \
  INTERPOSE_CALL(symbol, subject)       \
  INTERPOSE_CALL(symbol##64, subject)

/// A function that writes as many bytes as its argument `size` says.
#define INTERPOSE_WRITE(symbol, subject, size)           \
  INTERPOSE(symbol) {                                    \
    return pass(subject, [=](std::size_t some) mutable { \
      size = static_cast<Word>(some);                    \
      return next_##symbol(a, b, c, d, e, f);            \
    });                                                  \
  }

INTERPOSE_BOTH(open, onPath(callOfFlags(b), AT_FDCWD, a))
INTERPOSE_BOTH(openat, onPath(callOfFlags(c), a, b))
INTERPOSE_CALL(creat64, onPath(Call::create, AT_FDCWD, a))
INTERPOSE_BOTH(mkstemp, onPath(Call::create, AT_FDCWD, a))
INTERPOSE_BOTH(mkostemp, onPath(Call::create, AT_FDCWD, a))
INTERPOSE_BOTH(fopen, onStreamAt(a, b))
INTERPOSE_CALL(opendir, givingPointer(uninterrupted(onPath(Call::open, AT_FDCWD, a))))
INTERPOSE_CALL(mkdir, onPath(Call::makeFolder, AT_FDCWD, a))
INTERPOSE_CALL(mkdirat, onPath(Call::makeFolder, a, b))
INTERPOSE_CALL(mkdtemp, givingPointer(onPath(Call::makeFolder, AT_FDCWD, a)))
INTERPOSE_CALL(chmod, onPath(Call::changeMode, AT_FDCWD, a))
INTERPOSE_CALL(fchmod, onDescriptor(Call::changeMode, a))
INTERPOSE_CALL(fchmodat, onPath(Call::changeMode, a, b))
INTERPOSE_CALL(unlink, onPath(Call::remove, AT_FDCWD, a))
INTERPOSE_CALL(rmdir, onPath(Call::remove, AT_FDCWD, a))
INTERPOSE_CALL(remove, onPath(Call::remove, AT_FDCWD, a))
INTERPOSE_CALL(unlinkat, onPath(Call::remove, a, b))
INTERPOSE_CALL(rename, onPaths(Call::rename, AT_FDCWD, a, AT_FDCWD, b))
INTERPOSE_CALL(renameat2, onPaths(Call::rename, a, b, c, d))
INTERPOSE_CALL(link, onPaths(Call::link, AT_FDCWD, a, AT_FDCWD, b))
INTERPOSE_CALL(symlink, onPath(Call::link, AT_FDCWD, b))
INTERPOSE_BOTH(ftruncate, onDescriptor(Call::truncate, a))
INTERPOSE_CALL(read, onDescriptor(Call::read, a))
INTERPOSE_BOTH(pread, onDescriptor(Call::read, a))
INTERPOSE_WRITE(write, onDescriptor(Call::write, a, c), c)
INTERPOSE_WRITE(pwrite, onDescriptor(Call::write, a, c), c)
INTERPOSE_WRITE(pwrite64, onDescriptor(Call::write, a, c), c)
INTERPOSE_WRITE(sendfile, uninterrupted(onDescriptor(Call::write, a, d)), d)
INTERPOSE_WRITE(sendfile64, uninterrupted(onDescriptor(Call::write, a, d)), d)
INTERPOSE_WRITE(copy_file_range, uninterrupted(onDescriptor(Call::write, c, e)), e)
INTERPOSE(writev) {
  const auto* const parts = reinterpret_cast<const iovec*>(b);
  std::size_t size = 0;
  for (Word part = 0; part < c; ++part) size += parts[part].iov_len;
  return pass(onDescriptor(Call::write, a, static_cast<Word>(size)), [=](std::size_t some) {
    if (some == size) return next_writev(a, b, c);
    return next_write(a, reinterpret_cast<Word>(parts->iov_base),
                      static_cast<Word>(std::min(some, parts->iov_len)));
  });
}

// No process can tell a sync from none, so none is made: the disk would be what the loops wait for.
INTERPOSE(fsync) {
  if (!isArmed()) return next_fsync(a);
  return pass(onDescriptor(Call::sync, a), [=](std::size_t) -> Word {
    return ::fcntl(static_cast<int>(a), F_GETFD) < 0 ? -1 : 0;
  });
}
INTERPOSE(close) {
  if (!isArmed() || !isForWriting(a)) return next_close(a);
  return pass(onDescriptor(Call::close, a), [=](std::size_t) { return next_close(a); });
}
#define INTERPOSE_READDIR(symbol)                                                               \
  INTERPOSE(symbol) {                                                                           \
    const Word descriptor = ::dirfd(reinterpret_cast<DIR*>(a));                                 \
    const Subject subject = givingPointer(uninterrupted(onDescriptor(Call::read, descriptor))); \
    /* It reports its end as it reports an error, but leaves errno alone. */                    \
    const int before = errno;                                                                   \
    const Word entry = pass(subject, [=](std::size_t) { return next_##symbol(a); });            \
    if (errno == 0) errno = before;                                                             \
    return entry;                                                                               \
  }
INTERPOSE_READDIR(readdir)
INTERPOSE_READDIR(readdir64)
INTERPOSE(fread) {
  return std::max(
      pass(onStream(Call::read, d), [=](std::size_t) { return next_fread(a, b, c, d); }), Word{0});
}
INTERPOSE(fwrite) {
  const Word put = pass(onStream(Call::write, d, b * c), [=](std::size_t some) {
    const Word done = next_fwrite(a, 1, static_cast<Word>(some), d);
    if (static_cast<Word>(some) < b * c) errno = ENOSPC;
    return b == 0 ? 0 : done / b;
  });
  return std::max(put, Word{0});
}
INTERPOSE(fflush) {
  if (a == 0) return next_fflush(a);
  return pass(onStream(Call::write, a), [=](std::size_t) { return next_fflush(a); });
}
INTERPOSE(fclose) {
  const int descriptor = ::fileno(reinterpret_cast<std::FILE*>(a));
  if (!isArmed() || !isForWriting(descriptor)) return next_fclose(a);
  return pass(onStream(Call::close, a, 1), [=](std::size_t size) {
    if (size == 0) {
      // It fails: what the stream still holds is lost.
      const Word nowhere = next_open(reinterpret_cast<Word>("/dev/null"), O_WRONLY | O_CLOEXEC);
      ::dup2(static_cast<int>(nowhere), descriptor);
      next_close(nowhere);
    }
    return next_fclose(a);
  });
}
