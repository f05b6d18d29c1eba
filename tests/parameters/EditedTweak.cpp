#include "EditedTweak.h"

#include <map>
#include <mutex>
#include <utility>

#include "tavlen/collections/TweakDiffNotifications.h"
#include "tavlen/foundation/FileSystem.h"
#include "tavlen/foundation/JSONEncoder.h"
#include "tavlen/tweaks/TweakFileDiff.h"

namespace tavlen {

namespace {

struct Announced {
  std::mutex lock;
  /// By the tweak's place.
  std::multimap<std::string, std::string> diffs;
};

std::string wordFor(const TweakFile::Diff::Mode& mode) {
  if (const auto* update = std::get_if<TweakFile::Diff::UpdateHook>(&mode))
    return "UpdateHook(" + update->hook.selector + ")";
  if (const auto* added = std::get_if<TweakFile::Diff::AddHooks>(&mode)) {
    std::string word = "AddHooks(";
    for (const Hook& hook : added->hooks) word += hook.selector;
    return word + ")";
  }
  return std::holds_alternative<TweakFile::Diff::DeleteHook>(mode) ? "DeleteHook" : "other";
}

/// Observation lasts as long as the process, so it is set up once.
Announced& announced() {
  static auto* const all = [] {
    auto* const made = new Announced;
    addTweakDiffObserver(NotificationCenter::default_(), [made](const TweakDiffs& diffs) {
      const std::lock_guard lock(made->lock);
      for (const TweakDiff& diff : diffs) {
        const auto* change = dynamic_cast<const TweakFile::Diff*>(diff.get());
        made->diffs.emplace(diff->genericTweak()->url().string(),
                            change != nullptr ? wordFor(change->mode) : "other");
      }
    });
    return made;
  }();
  return *all;
}

}  // namespace

EditedTweak::EditedTweak(const std::string& hooks) {
  announced();
  folder_.write(
      "T 1/Manifest.json",
      R"({"configuration":{"name":"N","color":"darkRed","bundleID":"a.b"},"overrides":[],"hooks":[)" +
          hooks + "]}");
  file_ = TweakFile::at(folder_.path() / "T 1");
}

std::string EditedTweak::stored() const { return readFile(file_->url() / "Manifest.json"); }

std::string EditedTweak::storedHooks() const { return encodeJSON(file_->manifest()._hooks); }

std::vector<std::string> EditedTweak::takeDiffs() const {
  Announced& all = announced();
  const std::lock_guard lock(all.lock);
  const auto [first, last] = all.diffs.equal_range(file_->url().string());
  std::vector<std::string> words;
  for (auto diff = first; diff != last; ++diff) words.push_back(diff->second);
  all.diffs.erase(first, last);
  return words;
}

std::string storedHook(const std::string& selector, const std::string& args) {
  return R"({"className":"C","selector":")" + selector +
         R"(","signature":"v16@0:8","isClassMethod":false,"args":{)" + args + "}}";
}

}  // namespace tavlen
