#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// The progress of a piece of work, as a tree. A child accounts for some units of its parent, and
/// the parent's fraction includes the child's while the child is unfinished. A parent owns its
/// unfinished children; a child does not own its parent.
///
///     progress->becomeCurrent(10);  // the callee's progress, if it makes one, is worth 10 units
///     work();
///     progress->resignCurrent();
///
/// Threads: any; each thread has its own current progress. No lock is held while a handler runs.
/// The rules are those of the platform's class of this name.
class TAVLEN_API Progress : public std::enable_shared_from_this<Progress> {
  struct Access {};

 public:
  /// Creates a progress. It becomes a child of the thread's current progress, unless that has got a
  /// child since it became current.
  static std::shared_ptr<Progress> make(std::int64_t totalUnitCount);
  /// Creates a progress without a parent, whatever is current.
  static std::shared_ptr<Progress> discrete(std::int64_t totalUnitCount);
  /// Only for make() and discrete().
  Progress(Access /*unused*/, std::int64_t totalUnitCount) : total_(totalUnitCount) {}
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// The units of the whole work; negative when unknown.
  std::int64_t totalUnitCount() const;
  /// Sets the units of the whole work, and may thereby finish it.
  void setTotalUnitCount(std::int64_t count);
  /// The units completed, without those of unfinished children.
  std::int64_t completedUnitCount() const;
  /// Sets the completed units, and may thereby finish the work.
  void setCompletedUnitCount(std::int64_t count);

  /// The completed part, from 0 to 1; above 1 when more is completed than the total. 0 when a count
  /// is negative. With a total of 0 it is 1 once something is completed, else 0.
  double fractionCompleted() const;
  /// Whether the fraction is unknown: a count is negative, or both are 0.
  bool isIndeterminate() const;
  /// Whether all units are completed.
  bool isFinished() const;

  /// Makes `child` account for `pendingUnitCount` units of this progress. The units of a finished
  /// child are completed at once; a child of a cancelled progress is cancelled. Aborts the process
  /// when `child` already has a parent or is an ancestor of this progress.
  void addChild(const std::shared_ptr<Progress>& child, std::int64_t pendingUnitCount);

  /// The current progress of the calling thread; null for none.
  static std::shared_ptr<Progress> current();
  /// Makes this the thread's current progress until resignCurrent(). The first progress made until
  /// then gets the units.
  void becomeCurrent(std::int64_t pendingUnitCount);
  /// Restores the former current progress. Units that no child took are completed. Aborts the
  /// process when this is not the thread's current progress.
  void resignCurrent();

  /// Whether cancel() was called on it or on an ancestor.
  bool isCancelled() const;
  /// Cancels this progress and its descendants, never its parent; counts stay. The work must poll
  /// isCancelled() or set a handler. Handlers run one after the other on a new thread, because the
  /// calling thread or the main thread may be blocked on the very work being cancelled. A no-op the
  /// second time. Throws std::system_error when no thread can be started.
  void cancel();
  /// Sets the handler, which must not throw. When the progress is already cancelled, it runs at
  /// once, as for cancel().
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

  // Guarded by the one lock of all trees.
  std::int64_t total_;
  std::int64_t completed_ = 0;
  bool isCancelled_ = false;
  std::function<void()> cancellationHandler_;
  std::weak_ptr<Progress> parent_;
  std::vector<Child> children_;
};

}  // namespace tavlen
