#include "tavlen/bundles/Info.h"

#include <algorithm>
#include <utility>

namespace tavlen {

namespace {

constexpr std::int64_t kPhone = 1;
constexpr std::int64_t kPad = 2;

using Orientations = std::optional<std::vector<InterfaceOrientation>>;
using StoredOrientations = std::optional<std::vector<std::string>>;

Orientations knownOrientations(const StoredOrientations& stored) {
  if (!stored) return std::nullopt;
  std::vector<InterfaceOrientation> known;
  for (const std::string& text : *stored) {
    if (const auto orientation = fromRawValue<InterfaceOrientation>(text)) {
      known.push_back(*orientation);
    }
  }
  return known;
}

StoredOrientations storedOrientations(const Orientations& orientations) {
  if (!orientations) return std::nullopt;
  std::vector<std::string> stored;
  stored.reserve(orientations->size());
  for (const InterfaceOrientation orientation : *orientations) {
    stored.emplace_back(rawValue(orientation));
  }
  return stored;
}

}  // namespace

const std::string& Info::name() const {
  return _name ? *_name : _bundleName ? *_bundleName : executable;
}

void Info::setName(const std::string& name) {
  if (name != this->name()) _name = name;
}

const std::string& Info::bundleName() const {
  return _bundleName ? *_bundleName : _name ? *_name : executable;
}

void Info::setBundleName(std::string name) { _bundleName = std::move(name); }

const std::string& Info::version() const { return _shortVersion ? *_shortVersion : build; }

void Info::setVersion(std::string version) { _shortVersion = std::move(version); }

Orientations Info::orientations() const { return knownOrientations(_orientations); }

void Info::setOrientations(const Orientations& orientations) {
  _orientations = storedOrientations(orientations);
}

Orientations Info::ipadOrientations() const { return knownOrientations(_ipadOrientations); }

void Info::setIpadOrientations(const Orientations& orientations) {
  // On purpose: existing tweaks rely on this.
  _orientations = storedOrientations(orientations);
}

void Coding<Info::DeviceFamily>::encode(Encoder& encoder, Info::DeviceFamily value) {
  encoder.integer(value.supportsIPad ? kPad : kPhone);
}

void Coding<Info::DeviceFamily>::decode(Decoder& decoder, Info::DeviceFamily& value) {
  std::int64_t family = 0;
  if (decoder.attempt([&] { family = decoder.integer(); })) {
    value.supportsIPad = family == kPad;
    return;
  }
  std::vector<std::int64_t> families;
  tavlen::decode(decoder, families);
  value.supportsIPad = std::find(families.begin(), families.end(), kPad) != families.end();
}

}  // namespace tavlen
