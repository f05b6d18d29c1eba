// Reads Mach-O images again and again: with each byte inverted, and cut at each offset. Every time
// the parser must give a result or its own error, within a second and within a bound on memory.
//   SweepImages STEP FILE...    takes every STEPth byte and offset
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>
#include <system_error>

#include "fuzz/Budget.h"
#include "tavlen/bundles/Executable.h"
#include "tavlen/foundation/files/FileDescriptor.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/introspection/classes/StaticClassParser.h"
#include "tests/support/TemporaryFolder.h"

namespace tavlen {
namespace {

/// What is being read, for the report of a crash or a hang.
std::array<char, 512> current;

extern "C" void reportCurrent(int signal) {
  static_cast<void>(!::write(STDERR_FILENO, current.data(), ::strnlen(current.data(), 512)));
  ::raise(signal);  // with its default action
}

void reportCurrentOnSignals() {
  struct sigaction action {};
  action.sa_handler = reportCurrent;
  action.sa_flags = static_cast<int>(SA_RESETHAND | SA_NODEFER);
  for (const int each : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGALRM}) {
    ::sigaction(each, &action, nullptr);
  }
}

struct Tally {
  std::size_t whole = 0, partial = 0, refused = 0;
};

/// An image that is changed in place.
class SweptImage {
 public:
  SweptImage(const std::string& source, const TemporaryFolder& folder)
      : name_(fs::path(source).filename().string()),
        bytes_(readFile(source)),
        executable_({}, folder.path(), name_, false),
        file_(FileDescriptor::open(folder.write(name_, bytes_), O_RDWR)) {}

  void invertEach(std::size_t step) {
    for (std::size_t i = 0; i < bytes_.size(); i += step) {
      write(i, static_cast<char>(~bytes_[i]));
      read("byte inverted at", i, bytes_.size());
      write(i, bytes_[i]);
    }
  }

  /// Ends with an empty file.
  void cutAtEach(std::size_t step) {
    for (std::size_t size = bytes_.size() / step * step;; size -= step) {
      require(::ftruncate(file_.get(), static_cast<off_t>(size)) == 0);
      read("cut at", size, size);
      if (size == 0) break;
    }
  }

  const std::string& name() const { return name_; }
  const Tally& tally() const { return tally_; }

 private:
  void require(bool succeeded) const {
    if (!succeeded) throw std::system_error(errno, std::generic_category(), name_);
  }

  void write(std::size_t offset, char byte) const {
    require(::pwrite(file_.get(), &byte, 1, static_cast<off_t>(offset)) == 1);
  }

  void read(const char* change, std::size_t offset, std::size_t size) {
    static_cast<void>(std::snprintf(current.data(), current.size(), "while reading %s, %s %zu\n",
                                    name_.c_str(), change, offset));
    constexpr unsigned kHang = 20;  // in seconds of the clock, on a loaded machine
    ::alarm(kHang);
    constexpr fuzz::Budget kBudget = {
        .bytes = 1 << 20, .bytesPerByte = 4, .seconds = 1, .secondsPerByte = 0};
    fuzz::requireWithin(kBudget, size, [&] {
      try {
        const auto result = StaticClassParser().parseImage(executable_);
        ++(result.diagnostics.empty() ? tally_.whole : tally_.partial);
      } catch (const StaticClassParser::Error&) {
        ++tally_.refused;
      }
    });
    ::alarm(0);
  }

  std::string name_;
  std::string bytes_;
  Executable executable_;
  FileDescriptor file_;
  Tally tally_;
};

void sweep(std::size_t step, const std::string& source) {
  const TemporaryFolder folder(memoryFolder());
  SweptImage image(source, folder);
  image.invertEach(step);
  image.cutAtEach(step);
  const auto& [whole, partial, refused] = image.tally();
  std::cout << image.name() << ": " << whole << " without diagnostics, " << partial
            << " with diagnostics, " << refused << " refused" << std::endl;
}

}  // namespace
}  // namespace tavlen

int main(int argc, char** argv) {
  std::size_t step = 0;
  if (argc > 2) std::from_chars(argv[1], argv[1] + std::string_view(argv[1]).size(), step);
  if (step == 0) {
    std::cerr << "usage: SweepImages STEP FILE...\n";
    return 2;
  }
  tavlen::reportCurrentOnSignals();
  try {
    for (int i = 2; i < argc; ++i) tavlen::sweep(step, argv[i]);
  } catch (const std::exception& error) {
    std::cerr << tavlen::current.data() << error.what() << '\n';
    return 1;
  }
}
