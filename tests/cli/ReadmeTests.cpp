#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "tavlen/foundation/files/FileSystem.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPaths.h"

namespace tavlen {
namespace {

namespace fs = std::filesystem;

/// The lines of the README's longest example for a shell, from the one that sets PATH on.
std::string exampleOfReadme() {
  std::ifstream readme(fs::path(paths().examples).parent_path() / "README.md");
  std::string line;
  while (std::getline(readme, line) && !line.starts_with("    export PATH=")) continue;
  std::string script;
  do script += line + "\n";
  while (std::getline(readme, line) && line.starts_with("    "));
  return script;
}

TEST(Readme, ExampleRunsAsItStands) {
  const TemporaryFolder clone;
  const fs::path built = fs::path(paths().command).parent_path();
  fs::create_directories(clone.path() / "build/release");
  fs::create_directory_symlink(built, clone.path() / "build/release/bin");
  fs::create_directory_symlink(built.parent_path() / "share", clone.path() / "build/release/share");
  fs::copy(paths().examples, clone.path() / "examples", fs::copy_options::recursive);
  std::ofstream(clone.path() / "example.sh") << exampleOfReadme();
  // The address sanitizer overlooks what GNUstep leaks, and finds GNUstep only in whole call
  // stacks.
  const std::string command = "cd '" + clone.path().string() +
                              "' && ASAN_OPTIONS=fast_unwind_on_malloc=0 "
                              "sh -e example.sh >out 2>err </dev/null";
  ASSERT_EQ(std::system(command.c_str()), 0) << readFile(clone.path() / "err");
  const std::string out = readFile(clone.path() / "out");
  EXPECT_NE(out.find("Morning  tweak  com.example.notes  yes"), std::string::npos) << out;
}

}  // namespace
}  // namespace tavlen
