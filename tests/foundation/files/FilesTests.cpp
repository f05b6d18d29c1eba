#include <sys/stat.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <thread>

#include "tavlen/foundation/files/Connection.h"
#include "tavlen/foundation/files/DirectoryWatcher.h"
#include "tavlen/foundation/files/DiskSync.h"
#include "tavlen/foundation/files/FileReplacement.h"
#include "tavlen/foundation/files/PeerEnd.h"
#include "tavlen/foundation/files/RandomAccessFile.h"
#include "tavlen/foundation/files/URL.h"
#include "tests/support/TableFile.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

using namespace std::string_literals;

constexpr auto kReadFile = [](const std::filesystem::path& path) { return readFile(path); };
constexpr auto kReadText = [](const std::filesystem::path& path) { return readText(path); };

class FileSystemTest : public testing::Test {
 protected:
  fs::path write(const std::string& bytes) const { return temporary_.write("f", bytes); }
  template <class Body>
  static int errorOf(const fs::path& path, Body body) {
    const auto error = thrown<std::system_error>([&] { body(path); });
    if (!error) return 0;
    EXPECT_NE(std::string(error->what()).find(path.string()), std::string::npos) << error->what();
    return error->code().value();
  }

  const TemporaryFolder temporary_;
  const fs::path folder_ = temporary_.path();
};

TEST_F(FileSystemTest, readsOnlyRegularFiles) {
  const std::string large(100'000, 'x');
  EXPECT_EQ(readFile(write(large)), large);
  EXPECT_EQ(readFile(write("")), "");
  fs::create_symlink("f", folder_ / "link");
  EXPECT_EQ(readFile(folder_ / "link"), "");
  // Its size is 0 as long as nobody reads it.
  EXPECT_FALSE(readFile("/proc/self/stat").empty());

  ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(errorOf(folder_ / "pipe", kReadFile), EINVAL);
  EXPECT_EQ(errorOf("/dev/zero", kReadFile), EINVAL);
  EXPECT_EQ(errorOf(folder_, kReadFile), EISDIR);
  EXPECT_EQ(errorOf(folder_ / "missing", kReadFile), ENOENT);
}

TEST_F(FileSystemTest, detectsTheEncodingOfText) {
  const struct {
    std::string bytes;
    int textError;
    std::string text;
  } rows[] = {
      {"", 0, ""},
      {"caf\xC3\xA9", 0, "caf\xC3\xA9"},
      {"\xEF\xBB\xBFz", 0, "z"},
      {"\xFE\xFF\0z\xD8\x3D\xDE\0"s, 0, "z\xF0\x9F\x98\x80"},
      {"\xFF\xFEz\0"s, 0, "z"},
      {"\xFF\xFE\0\0z\0\0\0"s, 0, "z"},
      {"\0\0\xFE\xFF\0\0\0z"s, 0, "z"},
      {"\xFF\xFEz"s, EILSEQ, ""},               // half a unit
      {"\xFE\xFF\xD8\x3D\0z"s, EILSEQ, ""},     // lone surrogate
      {"\0\0\xFE\xFF\0\x11\0\0"s, EILSEQ, ""},  // above U+10FFFF
      {"caf\xE9", EILSEQ, ""},                  // Latin-1
  };
  for (const auto& row : rows) {
    const std::filesystem::path path = write(row.bytes);
    EXPECT_EQ(errorOf(path, kReadText), row.textError) << testing::PrintToString(row.bytes);
    if (row.textError == 0) {
      EXPECT_EQ(readText(path), row.text);
    }
  }
}

TEST_F(FileSystemTest, refusesFilesThatNoDocumentIsAsLargeAs) {
  EXPECT_EQ(readFileUpTo(write("abc"), 3), "abc");
  EXPECT_EQ(readFileUpTo(folder_ / "f", 2), std::nullopt);
  EXPECT_EQ(readFileUpTo("/proc/self/stat", 2), std::nullopt);  // it grows while it is read
  std::filesystem::resize_file(write(""), std::uintmax_t{1} << 40);
  EXPECT_EQ(errorOf(folder_ / "f", kReadFile), EFBIG);
}

TEST_F(FileSystemTest, findsStoredNamesInsideTheirFolderOnly) {
  fs::create_directories(folder_ / "in" / "sub");
  fs::create_symlink("..", folder_ / "in" / "out");
  fs::create_symlink("sub", folder_ / "in" / "same");
  for (const std::string& name : {"a"s, "sub/a"s, "sub/../a"s, "same/a"s, "missing/a"s, "..a"s}) {
    EXPECT_TRUE(pathInside(folder_ / "in", name)) << name;
  }
  for (const std::string& name :
       {""s, "/etc"s, ".."s, "../in2/a"s, "sub/../../a"s, "out/f"s, "."s, "a\0b"s}) {
    EXPECT_FALSE(pathInside(folder_ / "in", name)) << testing::PrintToString(name);
  }
}

TEST_F(FileSystemTest, replacesFilesWholeOrNotAtAll) {
  const fs::path file = write("old");
  fs::permissions(file, fs::perms::owner_read | fs::perms::owner_write);
  const fs::path leftOver = folder_ / ".tavlen-1-2";
  std::ofstream(leftOver) << "of a crash";
  const fs::path young = folder_ / ".tavlen-3-4";
  std::ofstream(young) << "of another at work";
  fs::last_write_time(leftOver, fs::file_time_type::clock::now() - std::chrono::hours(1));
  { const FileReplacement dropped(file, "never committed"); }
  EXPECT_FALSE(fs::exists(leftOver));
  EXPECT_TRUE(fs::exists(young));
  EXPECT_EQ(readFile(file), "old");
  replaceFile(file, "new");
  EXPECT_EQ(readFile(file), "new");
  EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read | fs::perms::owner_write);

  fs::create_directory(folder_ / "other");
  fs::create_symlink("other/target", folder_ / "link");  // to nothing yet
  replaceFile(folder_ / "link", "through the link");
  EXPECT_TRUE(fs::is_symlink(folder_ / "link"));
  EXPECT_EQ(readFile(folder_ / "other" / "target"), "through the link");

  fs::create_symlink("loop", folder_ / "loop");
  const auto replace = [](const fs::path& path) { replaceFile(path, "x"); };
  EXPECT_EQ(errorOf(folder_ / "loop", replace), ELOOP);
  EXPECT_EQ(errorOf(folder_ / "other", replace), EISDIR);
  EXPECT_EQ(errorOf(folder_ / "missing" / "f", replace), ENOENT);
}

TEST(PlainComponent, keepsAPathInItsFolder) {
  for (const char* name : {"a", "...", ".a", "a b", "é", "-"}) EXPECT_TRUE(isPlainComponent(name));
  for (const std::string& name : {""s, "."s, ".."s, "/"s, "a/b"s, "a/"s, "a\0b"s}) {
    EXPECT_FALSE(isPlainComponent(name)) << testing::PrintToString(name);
  }
}

TEST(URL, filePathsAreEscapedAndRead) {
  for (const auto& row : tableFrom("file-urls.txt", 2)) {
    EXPECT_EQ(URL::fileURL(row[0]).absoluteString, row[1]);
    EXPECT_EQ((URL{row[1]}.path()), row[0]);
  }
  EXPECT_EQ(URL::fileURL("/\x01\x7F\xFF").absoluteString, "file:///%01%7F%FF");
  EXPECT_EQ(URL{"file:///%01%7F%FF"}.path(), "/\x01\x7F\xFF");
  EXPECT_EQ(URL::fileURL("/a//").absoluteString, "file:///a");
  EXPECT_EQ(URL::fileURL("/a//", true).absoluteString, "file:///a/");
  EXPECT_EQ(URL::fileURL("/a", true).absoluteString, "file:///a/");
  EXPECT_EQ(URL::fileURL("/", true).absoluteString, "file:///");
  EXPECT_EQ(URL::fileURL("a:b").path(), fs::current_path() / "a:b");
}

TEST(URL, pathIsThatOfFileURLsOnly) {
  const std::pair<const char*, const char*> rows[] = {{"FILE:///A%2fb", "/A/b"},
                                                      {"file://LocalHost/a/?q#f", "/a"},
                                                      {"file:/a%3f#/b?", "/a?"},
                                                      {"file:///a//", "/a"},
                                                      {"file:////a", "//a"}};
  for (const auto& [text, path] : rows) EXPECT_EQ(URL{text}.path(), path) << text;
  for (const char* text : {"file://localhosts/a", "file://host/a", "file://", "file:a", "file",
                           "http://a/b", "/a", "", "file:///a%00b", "file:///a%", "file:///a%4",
                           "file:///a%4x", "file:///a%-1", "file:///a%+1", "file:///a% 1"}) {
    EXPECT_EQ(URL{text}.path(), std::nullopt) << text;
  }
}

TEST(URL, referencesAreResolved) {
  const URL base{"http://a/b/c/d;p?q"};
  for (const auto& row : tableFrom("references.txt", 2)) {
    EXPECT_EQ(base.resolved(row[0]).absoluteString, "http://a/" + row[1]) << row[0];
  }
  EXPECT_EQ(base.resolved("g:h").absoluteString, "g:h");
  EXPECT_EQ(base.resolved("//g").absoluteString, "http://g");
  EXPECT_EQ(URL{"file:///tmp/x/"}.resolved("a%20b").absoluteString, "file:///tmp/x/a%20b");
  EXPECT_EQ(URL{"http://a"}.resolved("g").absoluteString, "http://a/g");
  EXPECT_EQ(URL{"a/b"}.resolved("../../c").absoluteString, "/c");
  EXPECT_EQ(URL{""}.resolved("g").absoluteString, "g");
}

TEST(Connection, CarriesOneWayOrBothAndIsNotInherited) {
  for (const auto make : {Connection::pipe, Connection::socketPair}) {
    const Connection made = make();
    made.second.write("x", "");
    std::array<char, 2> bytes{};
    EXPECT_EQ(made.first.read(bytes, ""), 1U);
    for (const FileDescriptor* end : {&made.first, &made.second}) {
      EXPECT_EQ(::fcntl(end->get(), F_GETFD), FD_CLOEXEC);
    }
  }
}

TEST(PeerEnd, IsReportedForPipes) {
  const auto isReported = [](const FileDescriptor& descriptor) {
    pollfd entry = pollForPeerEnd(descriptor.get());
    return ::poll(&entry, 1, 0) == 1;
  };
  for (const auto& [kept, closed] : {std::pair(&Connection::first, &Connection::second),
                                     std::pair(&Connection::second, &Connection::first)}) {
    Connection pipe = Connection::pipe();
    EXPECT_FALSE(isReported(pipe.*kept));
    pipe.*closed = FileDescriptor();
    EXPECT_TRUE(isReported(pipe.*kept));
  }
  const TemporaryFolder folder;  // a file can always be read, which is no end
  EXPECT_FALSE(isReported(FileDescriptor::open(folder.write("file", "x"), O_RDONLY)));
  ASSERT_EQ(::mkfifo((folder.path() / "both").c_str(), 0600), 0);
  const FileDescriptor both = FileDescriptor::open(folder.path() / "both", O_RDWR);
  ASSERT_EQ(::write(both.get(), "x", 1), 1);
  EXPECT_FALSE(isReported(both)) << "what the program itself wrote is no end";
}

TEST(DiskSync, FailsForWhatIsNoFile) {
  EXPECT_EQ(syncDescriptor(-1), -1);
  EXPECT_EQ(errno, EBADF);
  const TemporaryFolder folder;
  EXPECT_THROW(syncFile(folder.path() / "missing"), std::system_error);
  EXPECT_NO_THROW(syncFolder(folder.path() / "missing"));
}

using Wake = DirectoryWatcher::Wake;

/// A watcher of the folder and of "sub" in it, whose wait ends once nothing is left to wake it.
class DirectoryWatcherTest : public testing::Test {
 protected:
  DirectoryWatcherTest() {
    folder_.write("sub/file", "old");
    folder_.write("deep/er/file", "old");
    watcher_.watch({folder_.path(), folder_.path() / "sub", folder_.path() / "nowhere"});
  }

  /// Whether what `happens` wakes it within that time.
  bool wakes(const std::function<void()>& happens, std::chrono::milliseconds atMost) {
    std::array<int, 2> pipe{};
    EXPECT_EQ(::pipe(pipe.data()), 0);
    happens();
    const std::array<int, 1> ends = {pipe[0]};
    std::atomic<bool> isAwake = false;
    std::thread closing([&] {
      const auto last = std::chrono::steady_clock::now() + atMost;
      while (!isAwake && std::chrono::steady_clock::now() < last) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
      }
      ::close(pipe[1]);
    });
    const Wake wake = watcher_.wait(ends);
    isAwake = true;
    closing.join();
    ::close(pipe[0]);
    return wake == Wake::change;
  }

  TemporaryFolder folder_;
  DirectoryWatcher watcher_;
};

TEST_F(DirectoryWatcherTest, WakesForWhatHappensInItsFolders) {
  const fs::path folder = folder_.path();
  const std::pair<const char*, std::function<void()>> changes[] = {
      {"a new file", [&] { folder_.write("new", ""); }},
      {"one in the other folder", [&] { folder_.write("sub/new", ""); }},
      {"new contents", [&] { folder_.write("sub/file", "new"); }},
      {"a file in a file's place", [&] { fs::rename(folder / "new", folder / "sub/file"); }},
      {"a file's end", [&] { fs::remove(folder / "sub/new"); }},
      {"many",
       [&] {
         for (int i = 0; i < 20'000; ++i) {
           folder_.write("sub/file" + std::to_string(i % 2), "");
         }
       }},
      {"a folder's end", [&] { fs::remove_all(folder / "sub"); }}};
  for (const auto& [name, change] : changes)
    EXPECT_TRUE(wakes(change, std::chrono::seconds(15))) << name;
}

TEST_F(DirectoryWatcherTest, SleepsOverEverythingElse) {
  const fs::path folder = folder_.path();
  const std::pair<const char*, std::function<void()>> changes[] = {
      {"nothing", [] {}},
      {"a temporary name", [&] { folder_.write("sub/.new", ""); }},
      {"its end", [&] { fs::remove(folder / "sub/.new"); }},
      {"something deeper", [&] { folder_.write("deep/er/file", "new"); }},
      {"what is watched no more", [&] {
         watcher_.watch({folder});
         folder_.write("sub/file", "new");
       }}};
  for (const auto& [name, change] : changes)
    EXPECT_FALSE(wakes(change, std::chrono::milliseconds(200))) << name;
}

}  // namespace
}  // namespace tavlen
