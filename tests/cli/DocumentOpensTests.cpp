#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <string>
#include <utility>

#include "tavlen/foundation/files/FileDescriptor.h"
#include "tests/cli/CommandStoreTest.h"

namespace tavlen {
namespace {

/// Counts how often the file `name` of a folder is opened.
class OpenCount {
 public:
  OpenCount(const std::filesystem::path& folder, std::string name) : name_(std::move(name)) {
    // Openings that follow each other at once would be told as one, but a closing lies between.
    EXPECT_GE(::inotify_add_watch(events_.get(), folder.c_str(), IN_OPEN | IN_CLOSE), 0);
  }

  /// Since the last call.
  int take() {
    int count = 0;
    alignas(inotify_event) std::array<char, 1 << 16> buffer;
    for (ssize_t size = 0; (size = ::read(events_.get(), buffer.data(), buffer.size())) > 0;) {
      for (ssize_t at = 0; at < size;) {
        const auto* event = reinterpret_cast<const inotify_event*>(&buffer.at(std::size_t(at)));
        if ((event->mask & IN_OPEN) != 0 && event->len > 0 && event->name == name_) ++count;
        at += ssize_t{sizeof *event} + event->len;
      }
    }
    return count;
  }

 private:
  FileDescriptor events_{::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)};
  std::string name_;
};

TEST_F(CommandStoreTest, EachCommandOpensATweaksDocumentOnce) {
  const std::string id = newTweak("Tweak");
  std::string collection = run("collection new C --app com.example.notes").out;
  collection.pop_back();
  OpenCount opens(folder() / stored(id), "Manifest.json");
  const std::pair<std::string, int> rows[] = {
      {"hook add Tweak A b --signature v16@0:8", 1},
      {"hook list Tweak", 1},
      {"hook set Tweak '-[A b]' --name N", 1},
      {"param set Tweak N 0 nil", 1},
      {"param get Tweak N", 1},
      {"override add Tweak DisplayName Other", 1},
      {"override list Tweak", 1},
      {"show Tweak", 1},
      {"list", 1},
      {"source Tweak", 1},
      {"check Tweak", 1},
      {"build Tweak", 1},
      {"install Tweak", 1},
      {"uninstall Tweak", 1},
      {"collection add " + collection + " Tweak", 1},
      {"collection list " + collection, 1},
      {"install " + collection, 1},
      {"export Tweak", 1 + 1},  // read, and copied
      {"delete Tweak", 1},
  };
  for (const auto& [command, count] : rows) {
    const Result result = run(command);
    EXPECT_EQ(result.status, 0) << command << "\n" << result.err;
    EXPECT_EQ(opens.take(), count) << command;
  }
}

}  // namespace
}  // namespace tavlen
