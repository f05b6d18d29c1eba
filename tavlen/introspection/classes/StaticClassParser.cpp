#include "tavlen/introspection/classes/StaticClassParser.h"

#include <iterator>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>

#include "tavlen/bundles/Executable.h"
#include "tavlen/device/DeviceFiles.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/foundation/files/RandomAccessFile.h"
#include "tavlen/foundation/macho/MachOImage.h"
#include "tavlen/foundation/text/Unicode.h"
#include "tavlen/introspection/classes/detail/LibraryPaths.h"
#include "tavlen/introspection/classes/detail/ObjCMetadata.h"
#include "tavlen/introspection/classes/detail/ObjCNames.h"

namespace tavlen {

namespace {

std::string listOf(const MachOFile& file) {
  std::string names;
  for (const MachOSlice& slice : file.slices()) {
    names += (names.empty() ? "" : ", ") + slice.architecture();
  }
  return names;
}

MachOSlice sliceOf(const RandomAccessFile& file, const std::string& architecture) {
  const std::optional<MachOFile> machO = MachOFile::read(file);
  if (!machO) throw StaticClassParser::Error::notMachO();
  if (architecture.empty()) return machO->preferred();
  const MachOSlice* slice = machO->sliceNamed(architecture);
  if (slice == nullptr) {
    throw StaticClassParser::Error::architectureMissing(architecture, listOf(*machO));
  }
  return *slice;
}

/// Opens the image of which classes are read. Throws the parser's errors.
MachOImage openedImage(const Executable& executable, const std::string& architecture) {
  using Error = StaticClassParser::Error;
  const auto file = std::make_shared<const RandomAccessFile>(
      openedFile(DeviceRoot::shared(), executable.path().string()));
  const MachOSlice slice = sliceOf(*file, architecture);
  switch (slice.fileType) {
    case MachOSlice::FileType::execute:
    case MachOSlice::FileType::dylib:
    case MachOSlice::FileType::bundle:
      break;
    default:
      throw Error::notLinked(slice.architecture());
  }
  try {
    MachOImage image(file, slice);
    if (image.isEncrypted()) throw Error::encrypted(slice.architecture());
    return image;
  } catch (const MachOImage::Error& error) {
    if (error.which() == MachOImage::ErrorCase::unsupportedArchitecture) {
      throw Error::unsupportedArchitecture(slice.architecture());
    }
    throw Error::damaged(error.payload().front());
  }
}

/// Makes records of an image's metadata.
class Records {
 public:
  Records(const Executable& executable, const MachOImage& image)
      : pages_(image.memory().pages()), metadata_(image), paths_(executable, image) {}

  ObjCMetadata& metadata() { return metadata_; }

  /// The text of a view of the image, which it keeps in memory.
  SharedText text(std::string_view view) const {
    return isValidUTF8(view) ? SharedText(pages_, view) : SharedText(wellFormedUTF8(view));
  }
  /// The name that the run time shows for that of a class or protocol.
  SharedText name(std::string_view view) const {
    const std::optional<std::string> shown = shownSwiftName(view);
    return shown ? SharedText(wellFormedUTF8(*shown)) : text(view);
  }

  std::shared_ptr<ObjCClass> classRecord(const ObjCMetadata::Class& cls) {
    using Place = ObjCMetadata::Superclass::Place;
    auto record = std::make_shared<ObjCClass>();
    record->name = name(cls.name);
    record->methods = methodsOf(cls);
    record->protocols = protocolsOf(cls);
    const ObjCMetadata::Superclass& superclass = cls.superclass;
    if (superclass.place == Place::none || superclass.place == Place::unknown) return record;
    record->supercls = name(superclass.name);
    if (*record->supercls != superclass.name) record->mangledSuperclass = text(superclass.name);
    record->superclassPath =
        paths_.pathOf(superclass.place == Place::here ? 0 : superclass.ordinal);
    return record;
  }

  StaticClassParser::Category categoryRecord(const ObjCMetadata::Category& category) {
    return {name(category.className), text(category.name), methodsOf(category),
            protocolsOf(category)};
  }

 private:
  /// The methods of one owner, in one heap block.
  template <class Owner>
  ObjCClass::Methods methodsOf(const Owner& owner) {
    collected_.clear();
    metadata_.visitMethods(owner, [this](const ObjCMetadata::Method& method) {
      collected_.emplace_back(text(method.selector), text(method.encoding), method.isClassMethod);
    });
    const auto block = std::make_shared<std::vector<ObjCMethod>>(
        std::make_move_iterator(collected_.begin()), std::make_move_iterator(collected_.end()));
    ObjCClass::Methods methods;
    methods.reserve(block->size());
    for (ObjCMethod& method : *block) methods.emplace_back(block, &method);
    return methods;
  }

  template <class Owner>
  std::vector<SharedText> protocolsOf(const Owner& owner) {
    std::vector<SharedText> names;
    for (const std::string_view each : metadata_.protocolsOf(owner)) names.push_back(name(each));
    return names;
  }

  std::shared_ptr<const FilePages> pages_;
  ObjCMetadata metadata_;
  LibraryPaths paths_;
  std::vector<ObjCMethod> collected_;
};

/// Calls `visit` with each class that can be read, until it returns false. Reports one unit of
/// `parent`, which may be null.
void visitClasses(ObjCMetadata& metadata, const std::shared_ptr<Progress>& parent,
                  FunctionRef<bool(const ObjCMetadata::Class&)> visit) {
  constexpr std::size_t kClassesAtOnce = 256;  // between looks at the progress
  const std::size_t count = metadata.classCount();
  const auto progress = Progress::discrete(static_cast<std::int64_t>(count) + 1);
  if (parent != nullptr) parent->addChild(progress, 1);
  for (std::size_t i = 0; i < count; ++i) {
    if (i % kClassesAtOnce == 0) {
      if (progress->isCancelled()) {
        throw std::system_error(std::make_error_code(std::errc::operation_canceled));
      }
      progress->setCompletedUnitCount(static_cast<std::int64_t>(i));
    }
    const std::optional<ObjCMetadata::Class> cls = metadata.classAt(i);
    if (cls && !visit(*cls)) break;
  }
  progress->setCompletedUnitCount(progress->totalUnitCount());
}

StaticClassParser::Result resultOf(const Executable& executable, const std::string& architecture,
                                   const std::shared_ptr<Progress>& parent) {
  const MachOImage image = openedImage(executable, architecture);
  Records records(executable, image);
  ObjCMetadata& metadata = records.metadata();
  StaticClassParser::Result result;
  result.slice = image.slice();
  result.classes.reserve(metadata.classCount());
  visitClasses(metadata, parent, [&](const ObjCMetadata::Class& cls) {
    result.classes.push_back(records.classRecord(cls));
    return true;
  });
  for (const ObjCMetadata::Category& category : metadata.categories()) {
    result.categories.push_back(records.categoryRecord(category));
  }
  result.diagnostics = metadata.diagnostics();
  return result;
}

}  // namespace

StaticClassParser::Result StaticClassParser::parseImage(
    const Executable& executable, const std::shared_ptr<Progress>& parent) const {
  return resultOf(executable, architecture_, parent);
}

ClassParser::Classes StaticClassParser::parseBelow(const std::shared_ptr<Progress>& parent,
                                                   const Executable& executable) const {
  return resultOf(executable, architecture_, parent).classes;
}

std::shared_ptr<ObjCClass> StaticClassParser::parseNamedBelow(
    const std::shared_ptr<Progress>& parent, const Executable& executable,
    std::string_view name) const {
  const MachOImage image = openedImage(executable, architecture_);
  Records records(executable, image);
  std::shared_ptr<ObjCClass> found;
  visitClasses(records.metadata(), parent, [&](const ObjCMetadata::Class& cls) {
    if (records.name(cls.name) != name && cls.name != name) return true;
    found = records.classRecord(cls);
    return false;
  });
  return found;
}

StaticClassParser::Error StaticClassParser::Error::notMachO() {
  return {Case::notMachO, {"static_class_parser.error.not_mach_o", "Not a Mach-O file"}};
}

StaticClassParser::Error StaticClassParser::Error::architectureMissing(std::string architecture,
                                                                       std::string available) {
  return {Case::architectureMissing,
          {"static_class_parser.error.architecture_missing",
           "The file has no slice for %@, only for %@"},
          {std::move(architecture), std::move(available)}};
}

StaticClassParser::Error StaticClassParser::Error::unsupportedArchitecture(
    std::string architecture) {
  return {Case::unsupportedArchitecture,
          {"static_class_parser.error.unsupported_architecture",
           "The architecture %@ is not supported: only 64-bit images are read"},
          {std::move(architecture)}};
}

StaticClassParser::Error StaticClassParser::Error::notLinked(std::string architecture) {
  return {Case::notLinked,
          {"static_class_parser.error.not_linked",
           "The slice for %@ is not a linked image: classes are read from programs, dynamic "
           "libraries and loadable bundles"},
          {std::move(architecture)}};
}

StaticClassParser::Error StaticClassParser::Error::encrypted(std::string architecture) {
  return {Case::encrypted,
          {"static_class_parser.error.encrypted",
           "The slice for %@ is encrypted; the remote parser can ask the running app"},
          {std::move(architecture)}};
}

StaticClassParser::Error StaticClassParser::Error::damaged(std::string fault) {
  return {Case::damaged,
          {"static_class_parser.error.damaged", "The image is damaged: %@"},
          {std::move(fault)}};
}

}  // namespace tavlen
