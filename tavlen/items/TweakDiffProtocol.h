#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

class TweakProtocol;

/// What happened to an item as a whole.
enum class GenericTweakDiffMode { create, delete_ };

/// One change of a tweak or a collection. A value; TweakFile::Diff and TweakCollection::Diff derive
/// from it.
class TAVLEN_API TweakDiffProtocol {
 public:
  virtual ~TweakDiffProtocol() = default;

  /// Whether the item was created or deleted; nothing for a change within the item.
  virtual std::optional<GenericTweakDiffMode> genericMode() const = 0;
  /// The changed item.
  virtual std::shared_ptr<TweakProtocol> genericTweak() const = 0;

 protected:
  TweakDiffProtocol() = default;
  TweakDiffProtocol(const TweakDiffProtocol&) = default;
  TweakDiffProtocol(TweakDiffProtocol&&) = default;
  TweakDiffProtocol& operator=(const TweakDiffProtocol&) = default;
  TweakDiffProtocol& operator=(TweakDiffProtocol&&) = default;
};

/// A diff of either kind. Never null in a notification.
using TweakDiff = std::shared_ptr<const TweakDiffProtocol>;
/// Diffs in the order in which the changes were made.
using TweakDiffs = std::vector<TweakDiff>;

}  // namespace tavlen
