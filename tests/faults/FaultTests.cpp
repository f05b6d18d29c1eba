#include <sys/mman.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <memory>
#include <new>
#include <span>

#include "tavlen/device/DevicePaths.h"
#include "tests/faults/SampleStore.h"
#include "tests/faults/injector/FaultInjector.h"

namespace tavlen::faults {
namespace {

bool isBelow(std::string_view path, std::string_view folder) {
  return path == folder ||
         (path.starts_with(folder) && path.substr(folder.size()).starts_with('/'));
}

/// Whether `file` is one of the documents in the item at `item`, or the item itself. What a tweak
/// carries beside them is not waited for.
bool isDocumentOf(const fs::path& file, const std::string& item) {
  if (file == item) return true;
  const std::string name = file.filename();
  return file.parent_path() == item &&
         (name == "Manifest.json" || name == "script.objs" || name == "Icon.png");
}

/// Whether listing shows it: it lies in the store, under names that do not begin with ".".
bool isVisible(const std::string& path, const std::string& store) {
  return isBelow(path, store) && path.find("/.", store.size()) == path.npos;
}

std::string pathOf(const std::array<char, 400>& text) {
  std::string path = text.data();
  if (path.ends_with('/')) path.pop_back();
  return path;
}

bool isSynced(std::span<const Record> records, const std::string& path) {
  return std::any_of(records.begin(), records.end(), [&](const Record& record) {
    return record.call == Call::sync && record.error == 0 && pathOf(record.path) == path;
  });
}

/// What in `log`, that of a run without faults, could lose a document in the folder `store` to a
/// power failure; empty where nothing could: no document is written in its place; what gets a
/// document's name is on the disk before; and the name is brought there after.
std::string orderBreaches(const Log& log, const fs::path& store) {
  const std::string folder = store.native();
  const std::span<const Record> records(log.records.data(), log.count);
  std::set<std::string> unsynced;
  std::string breaches;
  for (std::size_t index = 0; index < records.size(); ++index) {
    const Record& record = records[index];
    const std::string path = pathOf(record.path);
    const std::string newPath = pathOf(record.newPath);
    const auto checkFolder = [&](const std::string& item) {
      const std::string parent = fs::path(item).parent_path();
      if (!isSynced(records.subspan(index), parent)) {
        breaches += "its folder is not synced: " + item + "\n";
      }
    };
    if (record.error != 0) continue;
    switch (record.call) {
      case Call::create:
      case Call::write:
      case Call::truncate:
        unsynced.insert(path);
        if (isVisible(path, folder)) breaches += "written in its place: " + path + "\n";
        break;
      case Call::sync:
        unsynced.erase(path);
        break;
      case Call::makeFolder:
        if (isVisible(path, folder)) checkFolder(path);
        break;
      case Call::rename:
      case Call::link:
        if (!isVisible(newPath, folder)) break;
        for (const std::string& file : unsynced) {
          if (isDocumentOf(file, path)) breaches += "named before it is synced: " + file + "\n";
        }
        checkFolder(newPath);
        break;
      default:
        break;
    }
  }
  return breaches;
}

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

const std::string kStore(kTweaksDir);
constexpr std::uint32_t kMostCalls = 2000;
constexpr unsigned kMostSeconds = 60;
constexpr int kMostReports = 5;

bool containsAll(const Tree& tree, const Tree& part) {
  return std::includes(tree.begin(), tree.end(), part.begin(), part.end());
}

Tree contentsOf(const Tree& tree, const std::string& item) {
  Tree contents;
  for (const auto& [path, bytes] : tree) {
    if (path == item || path.starts_with(item + "/")) contents[path.substr(item.size())] = bytes;
  }
  return contents;
}

struct Outcome {
  bool isKilled = false;
  bool hasFailed = false;
  std::string error;
  std::uint32_t hits = 0;
  Tree tree;
};

struct Fault {
  const char* name;
  Effect effect;
  int error;
  std::uint32_t times;
};

constexpr Fault kFaults[] = {
    {"EIO once", Effect::fail, EIO, 1},
    {"EIO for ever", Effect::fail, EIO, kForEver},
    {"ENOSPC once", Effect::fail, ENOSPC, 1},
    {"ENOSPC for ever", Effect::fail, ENOSPC, kForEver},
    {"EROFS once", Effect::fail, EROFS, 1},
    {"EROFS for ever", Effect::fail, EROFS, kForEver},
    {"a short write", Effect::shorten, 0, 1},
    {"a short write, then a full disk", Effect::shorten, 0, kForEver},
    {"EINTR once", Effect::fail, EINTR, 1},
    {"EINTR three times", Effect::fail, EINTR, 3},
    {"killed before", Effect::killBefore, 0, 1},
    {"killed after", Effect::killAfter, 0, 1},
};

/// What a run writes down, in memory that is shared with the processes that run it.
struct Notes {
  Log log;
  std::array<char, 1000> error;
};

/// Runs one operation again and again, each time with another of its calls hit by a fault, until
/// one run is hit by none; and checks what every run leaves. Only what is to be killed gets a
/// process of its own, as that takes as long as the operation.
class FaultTest : public testing::TestWithParam<Operation> {
 protected:
  FaultTest() {
    void* const memory =
        ::mmap(nullptr, sizeof(Notes), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) throw std::system_error(errno, std::generic_category(), "mmap");
    notes_ = new (memory) Notes();
  }
  ~FaultTest() override { ::munmap(notes_, sizeof(Notes)); }

  Tree tree() const { return readTree(store_.root(), GetParam().readArchive); }

  /// In this process, or in one that may be killed; returns whether it succeeded.
  bool run(const Plan& plan) const {
    bool succeeds = false;
    ::alarm(kMostSeconds);
    try {
      const Armed armed(store_.root().native(), plan, notes_->log);
      GetParam().run();
      succeeds = true;
    } catch (const std::exception& error) {
      const std::string text = error.what();
      std::copy_n(text.begin(), std::min(text.size(), notes_->error.size() - 1),
                  notes_->error.begin());
    }
    ::alarm(0);
    return succeeds;
  }

  int runInChild(const Plan& plan) const {
    const pid_t child = ::fork();
    if (child < 0) throw std::system_error(errno, std::generic_category(), "fork");
    if (child == 0) ::_exit(run(plan) ? 0 : 1);
    int status = 0;
    ::waitpid(child, &status, 0);
    return status;
  }

  Outcome runOnce(const Plan& plan) const {
    notes_->log.calls = 0;
    notes_->log.hits = 0;
    notes_->log.count = 0;
    notes_->error = {};
    Outcome outcome;
    if (plan.effect == Effect::killBefore || plan.effect == Effect::killAfter) {
      const int status = runInChild(plan);
      outcome.isKilled = WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
      outcome.hasFailed = !outcome.isKilled && status != 0;
      EXPECT_TRUE(outcome.isKilled || !WIFSIGNALED(status)) << "by signal " << WTERMSIG(status);
    } else {
      outcome.hasFailed = !run(plan);
    }
    outcome.error = notes_->error.data();
    outcome.hits = notes_->log.hits;
    outcome.tree = withPlainIdentifiers(tree(), old_, kStore);
    return outcome;
  }

  /// Runs it without a fault: it must succeed, and in the right order. What it leaves is what all
  /// later runs are measured by.
  void runUntouched() {
    store_.reset();
    const Outcome outcome = runOnce({});
    ASSERT_FALSE(outcome.hasFailed) << outcome.error;
    new_ = outcome.tree;
    ASSERT_NE(difference(old_, new_), "") << "it saves nothing";
    ASSERT_LE(notes_->log.count, Log::kMostRecords);
    if (GetParam().syncs) {
      EXPECT_EQ(orderBreaches(notes_->log, store_.root() / kStore.substr(1)), "");
    }
  }

  void runAll(const Fault& fault) {
    int reports = 0;
    for (std::uint32_t call = 1; call < kMostCalls && reports < kMostReports; ++call) {
      store_.reset();
      const Outcome outcome = runOnce({fault.effect, fault.error, call, fault.times});
      std::string complaint = complaintOf(outcome, fault);
      const bool canGoOn = outcome.isKilled && outcome.tree != new_;
      if (complaint.empty() && canGoOn) {
        const Outcome again = runOnce({});
        if (again.hasFailed) complaint = "the next run fails: " + again.error;
      }
      if (!complaint.empty()) {
        ++reports;
        ADD_FAILURE() << GetParam().name << ", " << fault.name << ", call " << call << ": "
                      << complaint;
      }
      if (outcome.hits == 0) return;
    }
  }

  /// What is wrong with what a run left behind; empty where nothing is.
  std::string complaintOf(const Outcome& outcome, const Fault& fault) const {
    const bool isOld = outcome.tree == old_;
    const bool isNew = outcome.tree == new_;
    const bool hasEnded = !outcome.isKilled && !outcome.hasFailed;
    if (hasEnded) {
      const bool isPart = GetParam().leavesOut && containsAll(new_, outcome.tree) &&
                          containsAll(outcome.tree, old_) && outcome.tree != old_;
      return isNew || isPart ? "" : "success is reported, but\n" + difference(new_, outcome.tree);
    }
    if (outcome.hasFailed && outcome.hits == 0) return "it fails untouched: " + outcome.error;
    if (outcome.hasFailed && fault.error == EINTR && GetParam().survivesInterrupts) {
      return "an interruption is an error: " + outcome.error;
    }
    if (isOld || isNew || isLeftover(outcome.tree)) return "";
    return "neither the old state nor the new one (" + outcome.error + "):\n" +
           difference(old_, outcome.tree);
  }

  bool isLeftover(const Tree& tree) const {
    switch (GetParam().leftover) {
      case Leftover::nothing:
        return false;
      case Leftover::halfMadeItem:
        return containsAll(tree, old_) && containsAll(new_, tree);
      case Leftover::noRecord:
        return isWithoutRecord(tree);
      case Leftover::movedMembers:
        return containsAll(tree, old_) && hasWholeItems(tree);
    }
    return false;
  }

  /// Everything but what is installed is as it was.
  bool isWithoutRecord(const Tree& tree) const {
    const auto isInstalled = [](const auto& entry) {
      return entry.first.starts_with(kInstalledTweaksDir);
    };
    const bool hasRecord = std::any_of(tree.begin(), tree.end(), [](const auto& entry) {
      return entry.first.ends_with(kTweakInfoFilename);
    });
    Tree elsewhere = tree;
    Tree oldElsewhere = old_;
    std::erase_if(elsewhere, isInstalled);
    std::erase_if(oldElsewhere, isInstalled);
    return !hasRecord && elsewhere == oldElsewhere;
  }

  bool hasWholeItems(const Tree& tree) const {
    const std::set<std::string> whole = newItems(new_, old_, kStore);
    const std::set<std::string> items = newItems(tree, old_, kStore);
    return std::all_of(items.begin(), items.end(), [&](const std::string& item) {
      const Tree contents = contentsOf(tree, item);
      // The collection comes first, as it lay in the archive: with the members' former identifiers.
      return contents == contentsOf(old_, kStore + "/" + kCollection) ||
             std::any_of(whole.begin(), whole.end(), [&](const std::string& other) {
               return contentsOf(new_, other) == contents;
             });
    });
  }

  const SampleStore store_{GetParam().prepare};
  const Tree old_ = tree();
  Tree new_;
  Notes* notes_ = nullptr;
};

TEST_P(FaultTest, LeavesTheOldDocumentsOrTheNewOnes) {
  runUntouched();
  if (HasFatalFailure()) return;
  for (const Fault& fault : kFaults) runAll(fault);
}

constexpr auto kName = [](const auto& test) { return test.param.name; };
INSTANTIATE_TEST_SUITE_P(Store, FaultTest, testing::ValuesIn(storeOperations()), kName);
INSTANTIATE_TEST_SUITE_P(Installation, FaultTest, testing::ValuesIn(installOperations()), kName);

}  // namespace
}  // namespace tavlen::faults
