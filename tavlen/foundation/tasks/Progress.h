#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace tavlen {

/// How far a piece of work has come, as a tree: a child stands for some of its parent's units, and
/// the parent's fraction holds the child's share while the child is under way. A parent keeps its
/// children until they have finished; a child does not keep its parent.
///
///     progress->becomeCurrent(10);  // the callee's progress, if it makes one, is worth 10 units
///     work();
///     progress->resignCurrent();
///
/// Threads: any; what is current is each thread's own. No lock is held while a handler runs.
/// The rules are those of the platform's class of this name.
class Progress : public std::enable_shared_from_this<Progress> {
  struct Access {};

 public:
  /// Becomes the child of the thread's current progress, if that one has none since it became
  /// current.
  static std::shared_ptr<Progress> make(std::int64_t totalUnitCount);
  /// Stands alone, whatever is current.
  static std::shared_ptr<Progress> discrete(std::int64_t totalUnitCount);
  /// For make() and discrete() only.
  Progress(Access /*unused*/, std::int64_t totalUnitCount) : total_(totalUnitCount) {}
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  std::int64_t totalUnitCount() const;
  void setTotalUnitCount(std::int64_t count);
  /// The units of children that are under way do not count yet.
  std::int64_t completedUnitCount() const;
  void setCompletedUnitCount(std::int64_t count);

  /// 0 where a count is negative. Without units it is 1 once something is completed, else 0. It is
  /// above 1 where more is completed than there is.
  double fractionCompleted() const;
  bool isIndeterminate() const;
  bool isFinished() const;

  /// Gives `child` so many of this progress's units. The child has finished already: they count at
  /// once. This progress is cancelled: so is the child. A child that has a parent, or that this
  /// progress descends from, is a programming error.
  void addChild(const std::shared_ptr<Progress>& child, std::int64_t pendingUnitCount);

  /// The calling thread's, or none.
  static std::shared_ptr<Progress> current();
  /// Makes this the thread's current progress until resignCurrent(). The first make() meanwhile
  /// gets the units.
  void becomeCurrent(std::int64_t pendingUnitCount);
  /// Brings the former current progress back. The units that no child got are completed. A
  /// programming error where this is not the thread's current progress.
  void resignCurrent();

  bool isCancelled() const;
  /// Marks this progress and all below it, the parent never. Counts stay; the work is to look at
  /// isCancelled(), or to have a handler. Handlers run after the call, one after the other, on a
  /// thread of their own: the caller's and the main one may be what they are to free. Throws
  /// std::system_error where there can be no further thread. Does nothing the second time.
  void cancel();
  /// Must not throw. Where the progress is cancelled already, it runs at once, as if by cancel().
  void setCancellationHandler(std::function<void()> handler);

 private:
  struct Child {
    std::shared_ptr<Progress> progress;
    std::int64_t units;
  };
  class Update;

  bool isValid() const { return total_ >= 0 && completed_ >= 0; }
  bool isComplete() const;
  double fraction() const;

  // All guarded by the one lock of all trees.
  std::int64_t total_;
  std::int64_t completed_ = 0;
  bool isCancelled_ = false;
  std::function<void()> cancellationHandler_;
  std::weak_ptr<Progress> parent_;
  std::vector<Child> children_;
};

}  // namespace tavlen
