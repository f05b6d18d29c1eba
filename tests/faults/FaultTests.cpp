#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "tests/faults/FaultLoop.h"
#include "tests/faults/Operation.h"
#include "tests/support/TemporaryFolder.h"

namespace tavlen::faults {
namespace {

namespace fs = std::filesystem;

/// The loops show nothing where calls pass the injector by.
TEST(FaultInjectorTest, SeesAndFailsTheCallsOfOtherLibraries) {
  const TemporaryFolder folder;
  const std::string file = fs::canonical(folder.path()) / "file";
  const auto log = std::make_unique<Log>();
  const auto calls = [&](Call call) {
    return std::count_if(
        log->records.begin(), log->records.begin() + log->count,
        [&](const Record& record) { return record.call == call && record.path.data() == file; });
  };
  {
    const Armed armed(fs::canonical(folder.path()).native(), {}, *log);
    std::ofstream(file) << "text";
    fs::permissions(file, fs::perms::owner_all);
    fs::copy_file(file, file + "2");
    fs::rename(file, file + "3");
  }
  for (const Call call :
       {Call::create, Call::write, Call::close, Call::changeMode, Call::open, Call::rename}) {
    EXPECT_EQ(calls(call), 1) << static_cast<int>(call);
  }
  const Armed armed(fs::canonical(folder.path()).native(), {Effect::fail, EROFS, 1, kForEver},
                    *log);
  EXPECT_FALSE(std::ofstream(file));
  std::error_code error;
  for (const auto& change : std::vector<std::function<void()>>{
           [&] { fs::copy_file(file + "2", file, error); }, [&] { fs::remove(file + "2", error); },
           [&] { fs::create_directory(file, error); }}) {
    change();
    EXPECT_EQ(error.value(), EROFS);
  }
}

class FaultTest : public testing::TestWithParam<Operation> {};

TEST_P(FaultTest, LeavesTheOldDocumentsOrTheNewOnes) {
  FaultLoop loop(GetParam());
  loop.runUntouched();
  if (!HasFatalFailure()) loop.runAll();
}

constexpr auto kName = [](const auto& test) { return test.param.name; };
INSTANTIATE_TEST_SUITE_P(Store, FaultTest, testing::ValuesIn(storeOperations()), kName);
INSTANTIATE_TEST_SUITE_P(Installation, FaultTest, testing::ValuesIn(installOperations()), kName);

}  // namespace
}  // namespace tavlen::faults
