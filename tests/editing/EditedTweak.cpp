#include "tests/editing/EditedTweak.h"

#include <any>
#include <utility>

#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/json/JSONEncoder.h"
#include "tavlen/items/TweakDiffNotifications.h"
#include "tavlen/tweaks/TweakFileDiff.h"

namespace tavlen {

namespace {

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

}  // namespace

EditedTweak::EditedTweak(const std::string& hooks) {
  folder_.write(
      "T 1/Manifest.json",
      R"({"configuration":{"name":"N","color":"darkRed","bundleID":"a.b"},"overrides":[],"hooks":[)" +
          hooks + "]}");
  file_ = TweakFile::at(folder_.path() / "T 1");
  token_ = NotificationCenter::default_().addObserver(
      std::string(kTweaksDidUpdateNotification), nullptr, [this](const Notification& notification) {
        const std::lock_guard lock(lock_);
        for (const TweakDiff& diff :
             std::any_cast<const TweakDiffs&>(notification.userInfo->at("diffs"))) {
          if (diff->genericTweak()->url() != file_->url()) continue;
          const auto* change = dynamic_cast<const TweakFile::Diff*>(diff.get());
          diffs_.push_back(change != nullptr ? wordFor(change->mode) : "other");
        }
      });
}

EditedTweak::~EditedTweak() { NotificationCenter::default_().removeObserver(token_); }

std::string EditedTweak::stored() const { return readFile(file_->url() / "Manifest.json"); }

std::string EditedTweak::storedHooks() const { return encodeJSON(file_->manifest()._hooks); }

std::vector<std::string> EditedTweak::takeDiffs() const {
  const std::lock_guard lock(lock_);
  return std::exchange(diffs_, {});
}

std::string storedHook(const std::string& selector, const std::string& args) {
  return R"({"className":"C","selector":")" + selector +
         R"(","signature":"v16@0:8","isClassMethod":false,"args":{)" + args + "}}";
}

}  // namespace tavlen
