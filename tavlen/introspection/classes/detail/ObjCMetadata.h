#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/foundation/macho/MachOImage.h"

namespace tavlen {

/// The Objective-C metadata of an image: views of what is in its file, without copies.
///
/// Texts are as in the file, perhaps malformed UTF-8; they are valid as long as the image's pages.
/// What cannot be read is left out and leaves a diagnostic. All calls together look at a multiple
/// of the file's size at most, however often its records refer to each other. Throws
/// std::system_error when the file cannot be read.
///
/// Threads: one object one thread at a time.
class ObjCMetadata {
 public:
  /// A method.
  struct Method {
    std::string_view selector;
    std::string_view encoding;
    bool isClassMethod = false;
  };
  /// A class's superclass.
  struct Superclass {
    /// Where the superclass is: there is none, as for a root class; only the run time knows it, as
    /// for some classes in Swift; in this image; in another one.
    enum class Place { none, unknown, here, elsewhere };

    Place place = Place::none;
    std::string_view name;
    int ordinal = 0;  ///< of Place::elsewhere, as in MachOImage::Pointer
  };
  /// The lists of methods and protocols of a class or of a category. Addresses; 0 for none.
  struct Lists {
    std::uint64_t instanceMethods = 0;
    std::uint64_t classMethods = 0;
    std::uint64_t protocols = 0;
  };
  /// A class that the image defines.
  struct Class {
    std::string_view name;
    Superclass superclass;
    std::uint64_t address = 0;
    Lists lists;  ///< without those of categories
  };
  /// A category of a class that another image defines.
  struct Category {
    std::string_view name;
    std::string_view className;
    Lists lists;
  };

  /// Reads the lists of classes and of categories in `image`, which must outlive this object.
  explicit ObjCMetadata(const MachOImage& image);

  /// The number of entries in the list of classes.
  std::size_t classCount() const { return classes_.size(); }
  /// The class at that place in the list; nothing for one that cannot be read.
  std::optional<Class> classAt(std::size_t index);
  /// The categories of other images' classes, in the order of the file.
  const std::vector<Category>& categories() const { return categories_; }

  /// Calls `visit` with each method of the class: instance methods, then class methods; of each
  /// kind those of categories first, the last category before the others.
  void visitMethods(const Class& cls, FunctionRef<void(const Method&)> visit);
  /// Calls `visit` with each method of the category: instance methods, then class methods.
  void visitMethods(const Category& category, FunctionRef<void(const Method&)> visit);
  /// The names of the adopted protocols, those of categories first as above.
  std::vector<std::string_view> protocolsOf(const Class& cls);
  /// The names of the protocols that the category adopts.
  std::vector<std::string_view> protocolsOf(const Category& category);

  /// One sentence for each record that could not be read; of very many, the first ones and their
  /// number.
  std::vector<std::string> diagnostics() const;

 private:
  using Pointer = MachOImage::Pointer;
  /// The part of a class that does not change while a program runs.
  struct ReadOnly {
    std::uint32_t flags = 0;
    std::uint64_t address = 0;
  };
  /// The lists of a category, and the address of the class of this image that it belongs to.
  struct OwnCategory {
    std::uint64_t classAddress;
    std::uint32_t number;
    Lists lists;
  };
  /// What an element of a list of methods holds. The run time cannot tell the types of some.
  enum class Entry { complete, withoutTypes, unreadable };
  using MethodField = std::uint64_t Lists::*;

  std::vector<std::uint64_t> pointersIn(std::string_view section);
  void readCategory(std::uint64_t address, const std::vector<std::uint64_t>& sortedClasses);
  std::pair<const OwnCategory*, const OwnCategory*> categoriesOf(const Class& cls) const;

  std::optional<ReadOnly> readOnlyOf(std::uint64_t cls);
  Superclass superclassOf(std::uint64_t cls, const ReadOnly& data, std::string_view name);
  std::uint64_t listAt(std::uint64_t address, std::string_view owner, std::string_view what);
  std::optional<std::string_view> textAt(const Pointer& pointer);
  std::optional<std::string_view> nameOf(std::uint64_t cls);

  void visitList(std::uint64_t list, std::string_view owner, bool isClassMethod,
                 FunctionRef<void(const Method&)> visit);
  /// Reads the element of a list of methods at `address`: three pointers, or three offsets.
  Entry readMethod(std::uint64_t address, Method& method);
  Entry readRelativeMethod(std::uint64_t address, Method& method);
  Entry complete(Method& method, const std::optional<std::string_view>& selector,
                 const Pointer& types);
  void appendProtocols(std::uint64_t list, std::string_view owner,
                       std::vector<std::string_view>& names);

  /// Counts `bytes` that are looked at. Returns false once there were too many.
  bool spend(std::uint64_t bytes);
  void report(std::string_view owner, std::string_view fault);

  const MachOImage& image_;
  const MachOMemory& memory_;
  std::vector<std::uint64_t> classes_;      ///< addresses; 0 for an unreadable one
  std::vector<OwnCategory> ownCategories_;  ///< sorted by class, then as in the file
  std::vector<Category> categories_;
  std::uint64_t budget_;  ///< bytes that may still be looked at
  bool isExhausted_ = false;
  std::vector<std::string> diagnostics_;
  std::size_t furtherDiagnostics_ = 0;
};

}  // namespace tavlen
