#include "tests/faults/FaultLoop.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <exception>
#include <iterator>
#include <new>
#include <set>
#include <system_error>

#include "tavlen/device/DevicePaths.h"
#include "tests/faults/CallOrder.h"

namespace tavlen::faults {

struct FaultLoop::Shared {
  Log log;
  std::array<char, 1000> error;  ///< what a run reported
};

struct FaultLoop::Fault {
  const char* name;
  Effect effect;
  int error;
  std::uint32_t times;
};

struct FaultLoop::Outcome {
  bool isKilled = false;
  bool hasFailed = false;
  std::string error;
  std::uint32_t hits = 0;
  Tree tree;
};

namespace {

constexpr std::uint32_t kMostCalls = 2000;
constexpr unsigned kMostSeconds = 60;
constexpr int kMostReports = 5;

bool containsAll(const Tree& tree, const Tree& part) {
  return std::includes(tree.begin(), tree.end(), part.begin(), part.end());
}

/// What lies at `item`, by paths that begin there.
Tree contentsOf(const Tree& tree, const std::string& item) {
  Tree contents;
  for (const auto& [path, bytes] : tree) {
    if (path == item || path.starts_with(item + "/")) contents[path.substr(item.size())] = bytes;
  }
  return contents;
}

}  // namespace

FaultLoop::FaultLoop(const Operation& operation)
    : operation_(operation), store_(operation.prepare), old_(tree()) {
  void* const memory =
      ::mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::system_error(errno, std::generic_category(), "mmap");
  shared_ = new (memory) Shared();
}

FaultLoop::~FaultLoop() { ::munmap(shared_, sizeof(Shared)); }

Tree FaultLoop::tree() const { return readTree(store_.root(), operation_.readArchive); }

/// In this process, or in one that may be killed at any of its calls; returns whether it succeeded.
bool FaultLoop::run(const Plan& plan) const {
  bool succeeds = false;
  ::alarm(kMostSeconds);
  try {
    const Armed armed(store_.root().native(), plan, shared_->log);
    operation_.run();
    succeeds = true;
  } catch (const std::exception& error) {
    const std::string text = error.what();
    std::copy_n(text.begin(), std::min(text.size(), shared_->error.size() - 1),
                shared_->error.begin());
  }
  ::alarm(0);
  return succeeds;
}

int FaultLoop::runInChild(const Plan& plan) const {
  const pid_t child = ::fork();
  if (child < 0) throw std::system_error(errno, std::generic_category(), "fork");
  if (child == 0) ::_exit(run(plan) ? 0 : 1);
  int status = 0;
  ::waitpid(child, &status, 0);
  return status;
}

FaultLoop::Outcome FaultLoop::runOnce(const Plan& plan) const {
  shared_->log.calls = 0;
  shared_->log.hits = 0;
  shared_->log.count = 0;
  shared_->error = {};
  Outcome outcome;
  if (plan.effect == Effect::killBefore || plan.effect == Effect::killAfter) {
    const int status = runInChild(plan);
    outcome.isKilled = WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
    outcome.hasFailed = !outcome.isKilled && status != 0;
    EXPECT_TRUE(outcome.isKilled || !WIFSIGNALED(status)) << "by signal " << WTERMSIG(status);
  } else {
    outcome.hasFailed = !run(plan);
  }
  outcome.error = shared_->error.data();
  outcome.hits = shared_->log.hits;
  outcome.tree = withPlainIdentifiers(tree(), old_, store_.store());
  return outcome;
}

void FaultLoop::runUntouched() {
  store_.reset();
  const Outcome outcome = runOnce({});
  ASSERT_FALSE(outcome.hasFailed) << outcome.error;
  new_ = outcome.tree;
  ASSERT_NE(difference(old_, new_), "") << "it saves nothing";
  ASSERT_LE(shared_->log.count, Log::kMostRecords);
  if (operation_.syncs) {
    EXPECT_EQ(orderBreaches(shared_->log, store_.root() / store_.store().substr(1)), "");
  }
}

void FaultLoop::runAll() {
  const Fault faults[] = {
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
  for (const Fault& fault : faults) runAll(fault);
}

void FaultLoop::runAll(const Fault& fault) {
  int reports = 0;
  for (std::uint32_t call = 1; call < kMostCalls && reports < kMostReports; ++call) {
    store_.reset();
    const Outcome outcome = runOnce({fault.effect, fault.error, call, fault.times});
    std::string complaint = this->fault(outcome, fault);
    const bool canGoOn = outcome.isKilled && outcome.tree != new_;
    if (complaint.empty() && canGoOn) {
      // What it left stands in nobody's way.
      const Outcome again = runOnce({});
      if (again.hasFailed) complaint = "the next run fails: " + again.error;
    }
    if (!complaint.empty()) {
      ++reports;
      ADD_FAILURE() << operation_.name << ", " << fault.name << ", call " << call << ": "
                    << complaint;
    }
    if (outcome.hits == 0) return;
  }
}

/// What is wrong with what a run left behind; empty where nothing is.
std::string FaultLoop::fault(const Outcome& outcome, const Fault& fault) const {
  const bool isOld = outcome.tree == old_;
  const bool isNew = outcome.tree == new_;
  const bool hasEnded = !outcome.isKilled && !outcome.hasFailed;
  if (hasEnded) {
    const bool isPart = operation_.leavesOut && containsAll(new_, outcome.tree) &&
                        containsAll(outcome.tree, old_) && outcome.tree != old_;
    return isNew || isPart ? "" : "success is reported, but\n" + difference(new_, outcome.tree);
  }
  if (outcome.hasFailed && outcome.hits == 0) return "it fails untouched: " + outcome.error;
  if (outcome.hasFailed && fault.error == EINTR && operation_.survivesInterrupts) {
    return "an interruption is an error: " + outcome.error;
  }
  if (isOld || isNew || isLeftover(outcome.tree)) return "";
  return "neither the old state nor the new one (" + outcome.error + "):\n" +
         difference(old_, outcome.tree);
}

bool FaultLoop::isLeftover(const Tree& tree) const {
  switch (operation_.leftover) {
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
bool FaultLoop::isWithoutRecord(const Tree& tree) const {
  const std::string installed(kInstalledTweaksDir);
  const auto isElsewhere = [&](const auto& entry) { return !entry.first.starts_with(installed); };
  Tree elsewhere;
  Tree oldElsewhere;
  std::copy_if(tree.begin(), tree.end(), std::inserter(elsewhere, elsewhere.end()), isElsewhere);
  std::copy_if(old_.begin(), old_.end(), std::inserter(oldElsewhere, oldElsewhere.end()),
               isElsewhere);
  const bool hasRecord = std::any_of(tree.begin(), tree.end(), [](const auto& entry) {
    return entry.first.ends_with(kTweakInfoFilename);
  });
  return !hasRecord && elsewhere == oldElsewhere;
}

bool FaultLoop::hasWholeItems(const Tree& tree) const {
  const std::string store = store_.store();
  const std::set<std::string> whole = newItems(new_, old_, store);
  const std::set<std::string> items = newItems(tree, old_, store);
  return std::all_of(items.begin(), items.end(), [&](const std::string& item) {
    const Tree contents = contentsOf(tree, item);
    // The collection comes first, as it lay in the archive: with the members' former identifiers.
    return contents == contentsOf(old_, store + "/" + kCollection) ||
           std::any_of(whole.begin(), whole.end(), [&](const std::string& other) {
             return contentsOf(new_, other) == contents;
           });
  });
}

}  // namespace tavlen::faults
