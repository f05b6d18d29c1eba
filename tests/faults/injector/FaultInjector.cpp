#include "tests/faults/injector/FaultInjector.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <string>

namespace tavlen::faults {

namespace {

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
  std::array<char, PATH_MAX> target{};
  const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
  const ssize_t size = ::readlink(link.c_str(), target.data(), target.size());
  return size < 0 ? std::string() : std::string(target.data(), static_cast<std::size_t>(size));
}

std::string absolute(int folder, const char* path) {
  if (path == nullptr) return {};
  if (*path == '/') return path;
  std::array<char, PATH_MAX> current{};
  const std::string base = folder != AT_FDCWD ? descriptorPath(folder)
                           : ::getcwd(current.data(), current.size()) != nullptr
                               ? std::string(current.data())
                               : std::string();
  return base + "/" + path;
}

bool isBelow(const std::string& path) {
  const std::string& folder = state().folder;
  return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

/// One call on its way.
struct Subject {
  Call call;
  std::string path;
  std::string newPath = {};
  std::size_t size = 0;  ///< of what is written
  /// By the C library's streams, or by calls that are documented to know no interruption.
  bool isInterruptible = true;

  bool counts() const { return isArmed() && (isBelow(path) || isBelow(newPath)); }
  bool changesDisk() const {
    return call != Call::open && call != Call::read && call != Call::close;
  }
};

bool canReport(int error, const Subject& subject) {
  switch (error) {
    case EINTR:
      return subject.isInterruptible &&
             (subject.call == Call::open || subject.call == Call::create ||
              subject.call == Call::read || subject.call == Call::write ||
              subject.call == Call::sync || subject.call == Call::close ||
              subject.call == Call::truncate);
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
  if (plan.effect == Effect::shorten && number > plan.first) {
    return Effect::fail;
  }
  return plan.effect;
}

void copyText(const std::string& text, std::array<char, 400>& place) {
  const std::size_t size = std::min(text.size(), place.size() - 1);
  std::copy_n(text.begin(), size, place.begin());
  place.at(size) = '\0';
}

void write(const Subject& subject, int error) {
  Log* const log = state().log;
  if (log == nullptr) return;
  const std::uint32_t index = log->count++;
  if (index >= Log::kMostRecords) return;
  Record& record = log->records.at(index);
  record.call = subject.call;
  record.error = error;
  copyText(subject.path, record.path);
  copyText(subject.newPath, record.newPath);
}

template <class Result>
Result failure() {
  if constexpr (std::is_pointer_v<Result>) {
    return nullptr;
  } else {
    return static_cast<Result>(-1);
  }
}

/// Makes the call, or what the plan wants instead. `proceed` is given how many bytes to write.
template <class Proceed>
auto pass(const Subject& subject, Proceed proceed) -> decltype(proceed(std::size_t{})) {
  using Result = decltype(proceed(std::size_t{}));
  if (!subject.counts()) return proceed(subject.size);
  const Effect effect = decide(subject);
  if (effect == Effect::fail) {
    // A descriptor is closed whatever close() reports.
    if (subject.call == Call::close) proceed(0);
    const int error = state().plan.effect == Effect::fail ? state().plan.error : ENOSPC;
    write(subject, error);
    errno = error;
    return failure<Result>();
  }
  errno = 0;
  const Result result = proceed(effect == Effect::shorten ? subject.size / 2 : subject.size);
  const int error = errno;
  write(subject, result == failure<Result>() ? error : 0);
  if (effect == Effect::killAfter) (void)::raise(SIGKILL);
  errno = error;
  return result;
}

Subject onDescriptor(Call call, int descriptor, std::size_t size = 0) {
  return {call, isArmed() ? descriptorPath(descriptor) : std::string(), "", size};
}

Subject onPath(Call call, int folder, const char* path) {
  if (!isArmed()) return {call, ""};
  return {call, absolute(folder, path)};
}

Subject onPaths(Call call, int folder, const char* path, int newFolder, const char* newPath) {
  if (!isArmed()) return {call, ""};
  return {call, absolute(folder, path), absolute(newFolder, newPath)};
}

Subject uninterrupted(Subject subject) {
  subject.isInterruptible = false;
  return subject;
}

Subject onStream(Call call, std::FILE* stream, std::size_t size = 0) {
  return uninterrupted(onDescriptor(call, stream == nullptr ? -1 : ::fileno(stream), size));
}

Call callOfFlags(int flags) {
  return (flags & (O_ACCMODE | O_CREAT | O_TRUNC)) == O_RDONLY ? Call::open : Call::create;
}

bool isForWriting(int descriptor) {
  const int flags = ::fcntl(descriptor, F_GETFL);
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

/// Defines the C library's function `symbol` anew. The name in C++ is another one, so that the
/// system's own declarations do not matter. In its body, `next` is the C library's.
#define INTERPOSE(result, symbol, parameters)                                        \
  extern "C" result injected_##symbol parameters __asm__(#symbol);                   \
  template <class... Arguments>                                                      \
  static result next_##symbol(Arguments... arguments) {                              \
    static const auto function =                                                     \
        reinterpret_cast<decltype(&injected_##symbol)>(::dlsym(RTLD_NEXT, #symbol)); \
    return function(arguments...);                                                   \
  }                                                                                  \
  extern "C" __attribute__((visibility("default"))) result injected_##symbol parameters

/// A function that passes on its arguments as they are, for a call on `subject`. `some` is how many
/// bytes to write.
#define INTERPOSE_CALL(result, symbol, parameters, subject, arguments)                           \
  INTERPOSE(result, symbol, parameters) {                                                        \
    return pass(subject, [=](std::size_t some) { return (void)some, next_##symbol arguments; }); \
  }

// The first two take the mode as a variable argument, which comes where a fixed one would.
#define INTERPOSE_OPEN(open, openat, creat)                                             \
  INTERPOSE_CALL(int, open, (const char* path, int flags, mode_t mode),                 \
                 onPath(callOfFlags(flags), AT_FDCWD, path), (path, flags, mode))       \
  INTERPOSE_CALL(int, openat, (int folder, const char* path, int flags, mode_t mode),   \
                 onPath(callOfFlags(flags), folder, path), (folder, path, flags, mode)) \
  INTERPOSE_CALL(int, creat, (const char* path, mode_t mode),                           \
                 onPath(Call::create, AT_FDCWD, path), (path, mode))
INTERPOSE_OPEN(open, openat, creat)
INTERPOSE_OPEN(open64, openat64, creat64)

INTERPOSE_CALL(int, mkdir, (const char* path, mode_t mode),
               onPath(Call::makeFolder, AT_FDCWD, path), (path, mode))
INTERPOSE_CALL(int, mkdirat, (int folder, const char* path, mode_t mode),
               onPath(Call::makeFolder, folder, path), (folder, path, mode))
INTERPOSE_CALL(char*, mkdtemp, (char* pattern), onPath(Call::makeFolder, AT_FDCWD, pattern),
               (pattern))
INTERPOSE_CALL(int, chmod, (const char* path, mode_t mode),
               onPath(Call::changeMode, AT_FDCWD, path), (path, mode))
INTERPOSE_CALL(int, fchmod, (int descriptor, mode_t mode),
               onDescriptor(Call::changeMode, descriptor), (descriptor, mode))
INTERPOSE_CALL(int, fchmodat, (int folder, const char* path, mode_t mode, int flags),
               onPath(Call::changeMode, folder, path), (folder, path, mode, flags))

#define INTERPOSE_REMOVE(symbol) \
  INTERPOSE_CALL(int, symbol, (const char* path), onPath(Call::remove, AT_FDCWD, path), (path))
INTERPOSE_REMOVE(unlink)
INTERPOSE_REMOVE(rmdir)
INTERPOSE_REMOVE(remove)
INTERPOSE_CALL(int, unlinkat, (int folder, const char* path, int flags),
               onPath(Call::remove, folder, path), (folder, path, flags))

// Those without flags leave the second argument alone.
#define INTERPOSE_MKSTEMP(symbol)                                                                  \
  INTERPOSE_CALL(int, symbol, (char* pattern, int flags), onPath(Call::create, AT_FDCWD, pattern), \
                 (pattern, flags))
INTERPOSE_MKSTEMP(mkstemp)
INTERPOSE_MKSTEMP(mkstemp64)
INTERPOSE_MKSTEMP(mkostemp)
INTERPOSE_MKSTEMP(mkostemp64)

#define INTERPOSE_PATHS(call, symbol)                                  \
  INTERPOSE_CALL(int, symbol, (const char* path, const char* newPath), \
                 onPaths(call, AT_FDCWD, path, AT_FDCWD, newPath), (path, newPath))
INTERPOSE_PATHS(Call::rename, rename)
INTERPOSE_PATHS(Call::link, link)
INTERPOSE_CALL(int, renameat, (int folder, const char* path, int newFolder, const char* newPath),
               onPaths(Call::rename, folder, path, newFolder, newPath),
               (folder, path, newFolder, newPath))
INTERPOSE_CALL(int, renameat2,
               (int folder, const char* path, int newFolder, const char* newPath, unsigned flags),
               onPaths(Call::rename, folder, path, newFolder, newPath),
               (folder, path, newFolder, newPath, flags))
INTERPOSE_CALL(int, linkat,
               (int folder, const char* path, int newFolder, const char* newPath, int flags),
               onPaths(Call::link, folder, path, newFolder, newPath),
               (folder, path, newFolder, newPath, flags))
INTERPOSE_CALL(int, symlink, (const char* text, const char* path),
               onPath(Call::link, AT_FDCWD, path), (text, path))
INTERPOSE_CALL(int, symlinkat, (const char* text, int folder, const char* path),
               onPath(Call::link, folder, path), (text, folder, path))

INTERPOSE_CALL(ssize_t, read, (int descriptor, void* bytes, std::size_t size),
               onDescriptor(Call::read, descriptor), (descriptor, bytes, size))
INTERPOSE_CALL(ssize_t, write, (int descriptor, const void* bytes, std::size_t size),
               onDescriptor(Call::write, descriptor, size), (descriptor, bytes, some))
INTERPOSE(ssize_t, writev, (int descriptor, const struct iovec* parts, int count)) {
  std::size_t size = 0;
  for (int part = 0; part < count; ++part) size += parts[part].iov_len;
  return pass(onDescriptor(Call::write, descriptor, size), [=](std::size_t some) {
    if (some == size) return next_writev(descriptor, parts, count);
    return next_write(descriptor, parts->iov_base, std::min(some, parts->iov_len));
  });
}

#define INTERPOSE_AT_OFFSET(pread, pwrite, sendfile, ftruncate)                                  \
  INTERPOSE_CALL(ssize_t, pread, (int descriptor, void* bytes, std::size_t size, off_t offset),  \
                 onDescriptor(Call::read, descriptor), (descriptor, bytes, size, offset))        \
  INTERPOSE_CALL(ssize_t, pwrite,                                                                \
                 (int descriptor, const void* bytes, std::size_t size, off_t offset),            \
                 onDescriptor(Call::write, descriptor, size), (descriptor, bytes, some, offset)) \
  INTERPOSE_CALL(ssize_t, sendfile, (int to, int from, off_t* offset, std::size_t size),         \
                 uninterrupted(onDescriptor(Call::write, to, size)), (to, from, offset, some))   \
  INTERPOSE_CALL(int, ftruncate, (int descriptor, off_t size),                                   \
                 onDescriptor(Call::truncate, descriptor), (descriptor, size))
INTERPOSE_AT_OFFSET(pread, pwrite, sendfile, ftruncate)
INTERPOSE_AT_OFFSET(pread64, pwrite64, sendfile64, ftruncate64)
INTERPOSE_CALL(ssize_t, copy_file_range,
               (int from, off_t* offset, int to, off_t* toOffset, std::size_t size, unsigned flags),
               uninterrupted(onDescriptor(Call::write, to, size)),
               (from, offset, to, toOffset, some, flags))

// No process can tell a sync from none, so none is made: the disk would be what the loops wait for.
#define INTERPOSE_SYNC(symbol)                                                           \
  INTERPOSE(int, symbol, (int descriptor)) {                                             \
    if (!isArmed()) return next_##symbol(descriptor);                                    \
    return pass(onDescriptor(Call::sync, descriptor),                                    \
                [=](std::size_t) { return ::fcntl(descriptor, F_GETFD) < 0 ? -1 : 0; }); \
  }
INTERPOSE_SYNC(fsync)
INTERPOSE_SYNC(fdatasync)
INTERPOSE_SYNC(syncfs)
INTERPOSE(int, close, (int descriptor)) {
  if (!isArmed() || !isForWriting(descriptor)) return next_close(descriptor);
  return pass(onDescriptor(Call::close, descriptor),
              [=](std::size_t) { return next_close(descriptor); });
}
#define INTERPOSE_READDIR(symbol, Result)                                                  \
  INTERPOSE(Result, symbol, (DIR * folder)) {                                              \
    const Subject subject = uninterrupted(onDescriptor(Call::read, ::dirfd(folder)));      \
    /* It reports its end as it reports an error, but leaves errno alone. */               \
    const int before = errno;                                                              \
    auto* const entry = pass(subject, [=](std::size_t) { return next_##symbol(folder); }); \
    if (errno == 0) errno = before;                                                        \
    return entry;                                                                          \
  }
INTERPOSE_READDIR(readdir, struct dirent*)
INTERPOSE_READDIR(readdir64, struct dirent64*)
INTERPOSE_CALL(DIR*, opendir, (const char* path), uninterrupted(onPath(Call::open, AT_FDCWD, path)),
               (path))

#define INTERPOSE_FOPEN(symbol)                                                                  \
  INTERPOSE(std::FILE*, symbol, (const char* path, const char* mode)) {                          \
    const bool isReading = std::strncmp(mode, "r", 1) == 0 && std::strchr(mode, '+') == nullptr; \
    const Call call = isReading ? Call::open : Call::create;                                     \
    const Subject subject = uninterrupted(onPath(call, AT_FDCWD, path));                         \
    return pass(subject, [=](std::size_t) { return next_##symbol(path, mode); });                \
  }
INTERPOSE_FOPEN(fopen)
INTERPOSE_FOPEN(fopen64)
INTERPOSE(std::size_t, fread,
          (void* bytes, std::size_t size, std::size_t count, std::FILE* stream)) {
  const ssize_t got = pass(onStream(Call::read, stream), [=](std::size_t) {
    return static_cast<ssize_t>(next_fread(bytes, size, count, stream));
  });
  return got < 0 ? 0 : static_cast<std::size_t>(got);
}
INTERPOSE(std::size_t, fwrite,
          (const void* bytes, std::size_t size, std::size_t count, std::FILE* stream)) {
  const ssize_t put = pass(onStream(Call::write, stream, size * count), [=](std::size_t some) {
    const std::size_t done = next_fwrite(bytes, std::size_t{1}, some, stream);
    if (some < size * count) errno = ENOSPC;
    return static_cast<ssize_t>(size == 0 ? 0 : done / size);
  });
  return put < 0 ? 0 : static_cast<std::size_t>(put);
}
INTERPOSE(int, fflush, (std::FILE * stream)) {
  if (stream == nullptr) return next_fflush(stream);
  return pass(onStream(Call::write, stream), [=](std::size_t) { return next_fflush(stream); });
}
INTERPOSE(int, fclose, (std::FILE * stream)) {
  const int descriptor = ::fileno(stream);
  if (!isArmed() || !isForWriting(descriptor)) return next_fclose(stream);
  Subject subject = onStream(Call::close, stream, 1);
  return pass(subject, [=](std::size_t size) {
    if (size == 0) {
      // It fails: what the stream still holds is lost.
      const int nowhere = next_open("/dev/null", O_WRONLY | O_CLOEXEC, mode_t{0});
      ::dup2(nowhere, descriptor);
      next_close(nowhere);
    }
    return next_fclose(stream);
  });
}
