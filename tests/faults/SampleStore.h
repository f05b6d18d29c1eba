#pragma once

#include "tests/support/TemporaryFolder.h"

namespace tavlen::faults {

/// The sample's items: two tweaks, and a collection of both.
inline const std::string kFirstTweak = "11111111-1111-4111-8111-111111111111";
inline const std::string kSecondTweak = "22222222-2222-4222-8222-222222222222";
inline const std::string kCollection = "33333333-3333-4333-8333-333333333333.collection";

/// A small store below a device root of its own, which it makes the shared one, and which comes
/// back as it was prepared for every run.
class SampleStore {
 public:
  /// `prepare` adds to it, where it is set.
  explicit SampleStore(const std::function<void()>& prepare);

  const std::filesystem::path& root() const { return root_; }
  /// Everything is as it was prepared again.
  void reset() const;

 private:
  TemporaryFolder folder_{memoryFolder()};
  std::filesystem::path root_;
  std::filesystem::path copy_;
};

}  // namespace tavlen::faults
