#pragma once

#include <memory>
#include <string_view>

#include "tavlen/tweaks/Manifest.h"

namespace tavlen::bench {

/// A reader of manifests into the library's records on simdjson's on-demand interface, to compare
/// with. It reads what the library writes: the type key comes first, and no key has escapes. Holds
/// a parser and a padded copy of a text. Throws simdjson's errors.
class ManifestPeer {
 public:
  explicit ManifestPeer(std::string_view text);
  ~ManifestPeer();
  ManifestPeer(const ManifestPeer&) = delete;
  ManifestPeer& operator=(const ManifestPeer&) = delete;

  /// The manifest in the text. The parser's memory is kept for the next call.
  TweakFile::Manifest read();

 private:
  struct Buffers;
  std::unique_ptr<Buffers> buffers_;
};

}  // namespace tavlen::bench
