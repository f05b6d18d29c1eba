#include <optional>
#include <string>

#include "tavlen/foundation/files/FileReplacement.h"
#include "tavlen/foundation/image/Image.h"
#include "tavlen/items/TweaksDirectory.h"
#include "tavlen/tweaks/Manifest.h"
#include "tavlen/tweaks/TweakFile.h"
#include "tests/faults/Operation.h"
#include "tests/faults/SampleStore.h"

namespace tavlen::faults {

namespace {

std::shared_ptr<TweakFile> firstTweak() {
  return TweakFile::at(TweaksDirectory::url() / kFirstTweak);
}

void editManifest() {
  firstTweak()->updateManifest(
      [](TweakFile::Manifest& manifest) { manifest.configuration.name = "Changed"; });
}

/// More than a stream or a socket takes at once.
void replaceLargeFile() {
  replaceFile(firstTweak()->resourcesDir() / "note.txt", std::string(300'000, 'x'));
}

}  // namespace

std::vector<Operation> tweakOperations() {
  return {
      {"ManifestWrite", editManifest},
      {"FileReplacement", replaceLargeFile},
      {.name = "Create",
       .run = [] { TweakFile::create("New", TweakColor::darkRed, TweakGlyph::default_(), "a.b"); },
       .leftover = Leftover::halfMadeItem},
      {"Delete", [] { firstTweak()->remove(); }},
      {"Script", [] { firstTweak()->writeScript("changed();\n"); }},
      {"IconSet",
       [] {
         firstTweak()->writeCustomIcon(Image(1, 1, {255, 0, 0, 255}));
       }},
      {.name = "IconClear",
       .run = [] { firstTweak()->writeCustomIcon(std::nullopt); },
       .prepare =
           [] {
             firstTweak()->writeCustomIcon(Image(1, 1, {0, 0, 255, 255}));
           }},
  };
}

}  // namespace tavlen::faults
