#include "tavlen/bundles/InfoOverrides.h"

#include <string>
#include <variant>
#include <vector>

namespace tavlen {

namespace {

struct Edit {
  Info& info;

  void operator()(const DisplayNameOverride& edit) const { info.setName(edit.value); }
  void operator()(const BundleNameOverride& edit) const { info.setBundleName(edit.value); }
  void operator()(const BundleIDOverride& edit) const { info.bundleID = edit.value; }
  void operator()(const VersionOverride& edit) const { info.setVersion(edit.value); }
  void operator()(const BuildOverride& edit) const { info.build = edit.value; }
  void operator()(const MinimumOSVersionOverride& edit) const {
    info.minimumOSVersion = edit.value;
  }
  void operator()(const IPadSupportOverride& edit) const { info.setSupportsIPad(edit.value); }
  void operator()(const OrientationsOverride& edit) const { info.setOrientations(edit.value); }
  void operator()(const OrientationsIPadOverride& edit) const {
    std::vector<std::string>& stored = info._ipadOrientations.emplace();
    for (const InterfaceOrientation orientation : edit.value) {
      stored.emplace_back(rawValue(orientation));
    }
  }
};

}  // namespace

void applyTo(Info& info, const Override& override_) { std::visit(Edit{info}, override_); }

}  // namespace tavlen
