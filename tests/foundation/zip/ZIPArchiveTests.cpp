#include "tavlen/foundation/zip/ZIPArchive.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <map>
#include <optional>
#include <sstream>

#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/tasks/Progress.h"
#include "tavlen/foundation/zip/ZIPError.h"
#include "tavlen/foundation/zip/detail/ZIPBudget.h"
#include "tavlen/foundation/zip/detail/ZIPDeflation.h"
#include "tavlen/foundation/zip/detail/ZIPExtraction.h"
#include "tavlen/foundation/zip/detail/ZIPNameSet.h"
#include "tests/support/TableFile.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPaths.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

namespace fs = std::filesystem;
using Case = ZIPError::Case;

/// What hostile_archives.py expects.
constexpr ZIPArchive::Limits kSmall = {.entries = 50,
                                       .entryBytes = 1 << 20,
                                       .archiveBytes = 2 << 20,
                                       .ratio = 20,
                                       .ratioFreeBytes = 256 << 10};

std::string summaryOf(const fs::path& file) {
  if (!fs::is_regular_file(file)) return "?";
  const std::string bytes = readFile(file);
  return std::to_string(bytes.size()) + " " + std::to_string(std::hash<std::string>()(bytes));
}

/// Each path below `folder` with the size and a hash of what it holds, and "/" for a folder.
std::map<std::string, std::string> contentsOf(const fs::path& folder) {
  std::map<std::string, std::string> contents;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
    contents[entry.path().lexically_relative(folder).string()] =
        entry.is_directory() ? "/" : summaryOf(entry.path());
  }
  return contents;
}

unsigned modeOf(const fs::path& path) {
  struct stat status {};
  EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
  return status.st_mode & 07777U;
}

void run(const std::string& command) { ASSERT_EQ(std::system(command.c_str()), 0) << command; }

template <class Work>
std::optional<ZIPError> errorOf(const Work& work) {
  return thrown<ZIPError>(work);
}

template <class Work>
int systemErrorOf(const Work& work) {
  const auto error = thrown<std::system_error>(work);
  return error ? error->code().value() : 0;
}

std::string noise(std::size_t count) {
  std::string bytes(count, '\0');
  std::uint32_t state = 1;
  for (char& byte : bytes) byte = static_cast<char>((state = state * 1664525 + 1013904223) >> 24);
  return bytes;
}

TEST(ZIPArchive, HostileArchivesAreRefusedByTheirFault) {
  const TemporaryFolder folder;
  const TemporaryFolder outside;
  run("python3 " + paths().testData + "/../foundation/zip/hostile_archives.py " +
      folder.path().string() + " " + outside.path().string());
  const auto before = contentsOf(folder.path());
  std::istringstream list(readFile(folder.path() / "list"));
  std::string file;
  std::string name;
  std::string payload;
  int count = 0;
  for (; list >> file >> name >> payload; ++count) {
    const auto error = errorOf([&] {
      ZIPArchive::unzipItem(folder.path() / file, folder.path() / "out", nullptr, kSmall);
    });
    ASSERT_TRUE(error.has_value()) << file << ' ' << name << " was taken";
    EXPECT_EQ(error->localizationKey(), "zip_error." + name) << error->what();
    if (payload != "-") {
      EXPECT_EQ(error->payload().front(), fromHex(payload.substr(1))) << file << ' ' << name;
    }
    EXPECT_THAT(error->description(), testing::HasSubstr(error->payload().front()));
    ASSERT_FALSE(fs::exists(folder.path() / "out")) << file;
    ASSERT_TRUE(fs::is_empty(outside.path())) << file;
  }
  EXPECT_GE(count, 60);
  EXPECT_EQ(contentsOf(folder.path()), before);
  EXPECT_FALSE(fs::exists(folder.path().parent_path() / "escape"));
}

class ZIPTree : public testing::Test {
 protected:
  /// A tree that comes back whole: names, bytes and permissions.
  void SetUp() override {
    folder_.write("Payload/text.txt", std::string(100'000, 'x'));
    folder_.write("Payload/Resources/\xC3\xA9 name.bin", noise(300'000));
    folder_.write("Payload/Resources/empty", "");
    folder_.write("Payload/Resources/readme", "r");
    folder_.write("Payload/Resources/README", "R");
    fs::create_directories(item() / "Executables/none");
    // Deeper than folders are held open, and a way up past those.
    std::string deep = "Payload/";
    for (int i = 0; i < 40; ++i) deep += "d/";
    folder_.write(deep + "x", "");
    folder_.write("Payload/d/z", "");
    ::chmod((item() / "text.txt").c_str(), 0640);
    ::chmod((item() / "Resources/readme").c_str(), 0755);
    ::chmod((item() / "Executables").c_str(), 0711);
    ::chmod((item() / "Resources").c_str(), 02777);
    ::chmod((item() / "Resources/empty").c_str(), 0466);
  }

  fs::path item() const { return folder_.path() / "Payload"; }
  fs::path archive() const { return folder_.path() / "archive.zip"; }
  fs::path out() const { return folder_.path() / "out"; }

  void expectTree(const fs::path& archive) {
    ASSERT_NO_THROW(ZIPArchive::unzipItem(archive, out())) << archive;
    EXPECT_EQ(contentsOf(out() / "Payload"), contentsOf(item())) << archive;
    EXPECT_EQ(std::distance(fs::directory_iterator(out()), {}), 1);
    fs::remove_all(out());
  }

  TemporaryFolder folder_;
};

TEST_F(ZIPTree, ComesBackWithNamesBytesAndPermissions) {
  folder_.write("Payload/.tavlen-1-2", "what a crash left");
  ZIPArchive::zipItem(item(), archive());
  fs::remove(item() / ".tavlen-1-2");
  for (const auto& [mask, modes] :
       {std::pair(0U, std::array{0640U, 0755U, 0711U, 0755U, 0644U}),
        std::pair(027U, std::array{0640U, 0750U, 0710U, 0750U, 0640U})}) {
    const mode_t before = ::umask(mask);
    ZIPArchive::unzipItem(archive(), out());
    ::umask(before);
    EXPECT_EQ(modeOf(out()), 0700U);
    std::size_t i = 0;
    for (const char* name :
         {"text.txt", "Resources/readme", "Executables", "Resources", "Resources/empty"})
      EXPECT_EQ(modeOf(out() / "Payload" / name), modes.at(i++)) << name << ' ' << mask;
    fs::remove_all(out());
  }
  expectTree(archive());
  run("unzip -tq " + archive().string() + " >/dev/null && python3 -m zipfile -t " +
      archive().string() + " >/dev/null");
  // A file by itself is one entry; a slash after a folder changes nothing.
  ZIPArchive::zipItem(item() / "text.txt", folder_.path() / "file.zip");
  ZIPArchive::unzipItem(folder_.path() / "file.zip", out());
  EXPECT_EQ(fs::file_size(out() / "text.txt"), 100'000U);
  ZIPArchive::zipItem(item() / "", folder_.path() / "slash.zip");
  fs::remove_all(out());
  expectTree(folder_.path() / "slash.zip");
}

TEST_F(ZIPTree, LargeFilesComeBackFromBlocksInTheSameArchiveEachTime) {
  constexpr std::size_t kMB = 1 << 20;
  std::string text;
  while (text.size() < 4 * kMB) text += std::to_string(text.size() * 7919) + " words, ";
  for (const std::size_t size : {kMB, kMB + 1, 3 * kMB, 4 * kMB - 1}) {
    folder_.write("Payload/text" + std::to_string(size), text.substr(0, size));
    folder_.write("Payload/noise" + std::to_string(size), noise(size));
    folder_.write("Payload/both" + std::to_string(size), text.substr(0, size / 2) + noise(size));
  }
  std::string pages;  // in step with any even sample
  while (pages.size() < 2 * kMB) pages += noise(4096) + std::string(60 << 10, '\0');
  folder_.write("Payload/pages", pages);
  ZIPArchive::zipItem(item(), archive());
  run("unzip -tq " + archive().string() + " >/dev/null");
  expectTree(archive());
  ZIPArchive::zipItem(item(), folder_.path() / "again.zip");
  EXPECT_TRUE(readFile(folder_.path() / "again.zip") == readFile(archive()));
  EXPECT_LT(fs::file_size(archive()), 24 * kMB);  // of which 18 are noise, before 14 of text
}

TEST_F(ZIPTree, FilesThatRepeatThemselvesStayBelowTheRatio) {
  std::string text;
  for (int i = 0; i < 40'000; ++i) text += "lorem ipsum dolor sit %d ";
  folder_.write("Payload/text", text);
  ZIPArchive::zipItem(item(), archive(), nullptr, {.ratioFreeBytes = 0});
  expectTree(archive());
}

TEST_F(ZIPTree, PartsAreOfOneFileUpToWhereItFirstEnded) {
  constexpr std::uint64_t kMB = 1 << 20;
  const fs::path file = folder_.write("file", std::string(20 * kMB, 'A'));
  const std::vector<ZIPItem> items = {{"file", file, 0644, 20 * kMB}};
  ZIPDeflation deflation(items);
  std::vector<ZIPDeflation::Part> parts = {deflation.take()};
  fs::rename(file, folder_.path() / "old");
  folder_.write("file", std::string(20 * kMB, 'B'));
  while (parts.size() < 20) {
    parts.push_back(deflation.take());
    if (parts.size() <= 10) {
      EXPECT_EQ(parts.back().crc, parts.front().crc);
    }
    // Far enough from the parts that may have been read by now.
    if (parts.size() == 2) fs::resize_file(folder_.path() / "old", 10 * kMB + 1);
    if (parts.size() == 12) fs::resize_file(folder_.path() / "old", 20 * kMB);
  }
  std::uint64_t size = 0;
  for (const ZIPDeflation::Part& part : parts) size += part.size;
  EXPECT_EQ(size, 10 * kMB + 1);
  EXPECT_TRUE(parts.back().isLast);
}

TEST_F(ZIPTree, ArchivesOfOtherProgramsAreTaken) {
  const std::string in = "cd " + folder_.path().string() + " && ";
  const std::string python =
      in + "python3 " + paths().testData + "/../foundation/zip/foreign_archives.py ";
  const std::vector<std::pair<std::string, std::string>> programs = {
      {"zip", in + "zip -qr zip.zip Payload"},
      {"zip1", in + "zip -qr -1 zip1.zip Payload/*"},
      {"ascii", in + "LC_ALL=C zip -qr ascii.zip Payload"},
      {"streamed", in + "zip -qr - Payload | cat > streamed.zip"},
      {"stored", in + "zip -qr -0 stored.zip Payload"},
      {"bsdtar", in + "LC_ALL=C.UTF-8 bsdtar -cf bsdtar.zip --format zip Payload"},
      {"bsdstored", in + "LC_ALL=C.UTF-8 bsdtar -cf bsdstored.zip --format zip --options "
                         "zip:compression=store Payload"},
      // Which fills up its last block with zeros.
      {"bsdpipe", in + "LC_ALL=C.UTF-8 bsdtar -cf - --format zip Payload | cat > bsdpipe.zip"},
      {"7z", in + "LC_ALL=C.UTF-8 7z a -tzip 7z.zip Payload >/dev/null"},
      {"python", in + "python3 -m zipfile -c python.zip Payload"},
      {"zip64", python + "zip64 zip64.zip"},
      {"wide", python + "wide wide.zip"},
      {"pystream", python + "stream pystream.zip"},
      {"mobile", python + "mobile mobile.zip"},
      {"unicodepath", python + "unicodepath unicodepath.zip"},
      {"nested", python + "nested nested.zip"}};
  for (const auto& [name, command] : programs) {
    run(command);
    expectTree(folder_.path() / (name + ".zip"));
  }
}

TEST_F(ZIPTree, OnlyTheTopThatIsAskedForIsUnpacked) {
  folder_.write("__MACOSX/._Payload", "x");
  folder_.write("Payload2/file", "x");
  run("cd " + folder_.path().string() + " && zip -qr archive.zip __MACOSX Payload Payload2");
  ZIPArchive::unzipItem(archive(), out(), nullptr, {}, "Payload");
  EXPECT_EQ(contentsOf(out() / "Payload"), contentsOf(item()));
  EXPECT_EQ(std::distance(fs::directory_iterator(out()), {}), 1);
}

TEST_F(ZIPTree, WhatCouldNotBeReadIsNotWritten) {
  const struct {
    std::string file;
    std::string bytes;
    Case error;
    std::string name;
  } rows[] = {{"tree/back\\slash", "", Case::invalidName, "tree/back\\slash"},
              {"tree/\xFF", "", Case::invalidName, "tree/\uFFFD"},
              {"tree/e\u0301", "", Case::duplicateName, "tree/\u00E9"},
              {"tree/a/b/c/d/" + std::string(250, 'x') + "/" + std::string(250, 'x') + "/" +
                   std::string(250, 'x') + "/" + std::string(250, 'x') + "/" + std::string(20, 'x'),
               "", Case::invalidName, ""},
              {"tree/large", noise((1 << 20) + 1), Case::entryTooLarge, "tree/large"},
              {"tree/zeros", std::string(1 << 20, '\0'), Case::ratioTooHigh, "tree/zeros"}};
  const auto expect = [&](Case which, const std::string& name) {
    const auto before = contentsOf(folder_.path()).size();
    const auto error =
        errorOf([&] { ZIPArchive::zipItem(folder_.path() / "tree", archive(), nullptr, kSmall); });
    ASSERT_TRUE(error.has_value()) << name;
    EXPECT_EQ(error->which(), which) << error->what();
    EXPECT_TRUE(name.empty() || error->payload().front() == name) << error->what();
    EXPECT_EQ(contentsOf(folder_.path()).size(), before) << name;
    fs::remove_all(folder_.path() / "tree");
    fs::create_directory(folder_.path() / "tree");
  };
  for (const auto& row : rows) {
    if (row.error == Case::duplicateName) folder_.write("tree/\u00E9", "");
    folder_.write(row.file, row.bytes);
    expect(row.error, row.name);
  }
  for (int i = 0; i < 50; ++i) folder_.write("tree/" + std::to_string(i), "");
  expect(Case::tooManyEntries, "50");
  for (int i = 0; i < 3; ++i) folder_.write("tree/" + std::to_string(i), noise(1 << 20));
  expect(Case::archiveTooLarge, "tree/2");
  fs::create_symlink("/", folder_.path() / "tree/link");
  expect(Case::symbolicLink, "tree/link");
  ::mkfifo((folder_.path() / "tree/pipe").c_str(), 0600);
  expect(Case::specialFile, "tree/pipe");
}

TEST_F(ZIPTree, FilesThatAreNoneNeitherBlockNorAreReplaced) {
  const auto zip = [&](const fs::path& from, const fs::path& to) {
    return systemErrorOf([&] { ZIPArchive::zipItem(from, to); });
  };
  const auto unzip = [&](const fs::path& from, const fs::path& to) {
    return systemErrorOf([&] { ZIPArchive::unzipItem(from, to); });
  };
  const fs::path pipe = folder_.path() / "pipe";
  ::mkfifo(pipe.c_str(), 0600);
  EXPECT_EQ(unzip(pipe, out()), EINVAL);
  EXPECT_EQ(unzip(item(), out()), EISDIR);
  EXPECT_EQ(unzip(folder_.path() / "none", out()), ENOENT);
  EXPECT_EQ(zip(folder_.path() / "none", archive()), ENOENT);
  EXPECT_EQ(zip(item(), folder_.path() / "none/archive.zip"), ENOENT);
  EXPECT_FALSE(fs::exists(out()));

  fs::create_symlink("nowhere", archive());
  EXPECT_EQ(zip(item(), archive()), EEXIST);
  fs::remove(archive());
  ZIPArchive::zipItem(item(), archive());
  const std::string bytes = readFile(archive());
  EXPECT_EQ(zip(item() / "text.txt", archive()), EEXIST);
  EXPECT_EQ(readFile(archive()), bytes);
  folder_.write("out/kept", "kept");
  EXPECT_EQ(unzip(archive(), out()), EEXIST);
  fs::remove_all(out());
  fs::create_symlink(item(), out());
  EXPECT_EQ(unzip(archive(), out()), EEXIST);
  EXPECT_TRUE(fs::is_symlink(out()));
}

TEST_F(ZIPTree, ProgressCountsBytesAndEndsCancelledWork) {
  const std::int64_t size = 100'000 + 300'000 + 2;
  const auto zipping = Progress::discrete(1);
  ZIPArchive::zipItem(item(), archive(), zipping.get());
  EXPECT_EQ(zipping->totalUnitCount(), size);
  EXPECT_EQ(zipping->completedUnitCount(), size);
  const auto unzipping = Progress::discrete(1);
  ZIPArchive::unzipItem(archive(), out(), unzipping.get());
  EXPECT_EQ(unzipping->totalUnitCount(), size);
  EXPECT_TRUE(unzipping->isFinished());
  fs::remove_all(out());

  const auto cancelled = Progress::discrete(1);
  cancelled->cancel();
  EXPECT_EQ(systemErrorOf([&] { ZIPArchive::unzipItem(archive(), out(), cancelled.get()); }),
            ECANCELED);
  EXPECT_FALSE(fs::exists(out()));
  fs::remove(archive());
  EXPECT_EQ(systemErrorOf([&] { ZIPArchive::zipItem(item(), archive(), cancelled.get()); }),
            ECANCELED);
  EXPECT_EQ(std::distance(fs::directory_iterator(folder_.path()), {}), 1);
}

TEST(ZIPBudget, TakesWhatIsAtItsLimitsAndNoMore) {
  const ZIPArchive::Limits limits = {
      .entries = 2, .entryBytes = 10, .archiveBytes = 15, .ratio = 3, .ratioFreeBytes = 12};
  ZIPBudget budget(limits, 5);
  EXPECT_EQ(errorOf([&] { budget.add("a", 11); }), ZIPError(Case::entryTooLarge, "a", 10));
  budget.add("b", 10);
  EXPECT_EQ(errorOf([&] { budget.add("c", 6); }), ZIPError(Case::archiveTooLarge, "c", 15));
  budget.add("d", 5);
  ZIPBudget dense(limits, 4);
  dense.add("e", 10);
  dense.add("f", 2);
  EXPECT_EQ(errorOf([&] { dense.add("g", 1); }), ZIPError(Case::ratioTooHigh, "g", 3));
  ZIPNameSet names(limits.entries);
  names.add("folder/file");
  EXPECT_EQ(errorOf([&] { names.add("more"); }), ZIPError(Case::tooManyEntries, "2"));
}

TEST(ZIPExtraction, WhatTheVolumeTakesForTheSameIsRefused) {
  const TemporaryFolder folder;
  const fs::path out = folder.path() / "out";
  const auto nothing = [](ZIPExtraction::Sink) {};
  {
    ZIPExtraction extraction(out);
    extraction.makeFile("a/file", 0, nothing);
    // Stands for a volume without capitals.
    fs::create_directory(out / "A");
    fs::create_symlink(folder.path(), out / "a/link");
    for (const std::string name : {"A/other", "a/file", "a/link", "a/link/x"}) {
      const auto error = errorOf([&] { extraction.makeFile(name, 0, nothing); });
      EXPECT_EQ(error, ZIPError(Case::caseConflict, name)) << name;
    }
    EXPECT_EQ(errorOf([&] { extraction.makeFolder("A/", 0); }), ZIPError(Case::caseConflict, "A/"));
    // A folder that another process swaps for a link is not followed.
    std::string deep;
    for (int i = 0; i < 40; ++i) deep += "d/";
    extraction.makeFile(deep + "x", 0, nothing);
    fs::rename(out / "d", out / "was");
    fs::create_directory_symlink(folder.path(), out / "d");
    EXPECT_EQ(systemErrorOf([&] { extraction.makeFile("d/y", 0, nothing); }), ENOTDIR);
  }
  EXPECT_FALSE(fs::exists(out));
  EXPECT_TRUE(fs::exists(folder.path()));
}

}  // namespace
}  // namespace tavlen
