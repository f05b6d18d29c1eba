#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/text/SharedText.h"
#include "tavlen/introspection/types/JXTypeDescription.h"
#include "tavlen/introspection/types/JXTypeQualifiers.h"

namespace tavlen {

class JXTypeCursor;

/// A type of C or Objective-C as the run time encodes it: a node of a tree that owns its parts.
///
/// Trees are parsed from encodings by JXTypeForEncoding() and JXTypeWithEncoding(), and built by
/// the `initWith...` functions of the subclasses. A tree is immutable except for the width of a bit
/// field. Plain nodes (`i`, `@`, `*`) are shared among trees and never destroyed, without reference
/// counting.
///
/// The encodings of a tree's nodes are views of one text, which lives as long as any of the nodes.
/// Bytes outside of the encoding's own characters are not interpreted: malformed UTF-8 is kept.
///
/// Threads: any; several may read a tree concurrently while none sets the width of a bit field.
class TAVLEN_API JXType {
 public:
  /// Maximum nesting of containers. Past it, a container is replaced by a basic node for its
  /// opening character. Chosen so that such a tree still fits the JSON encoder's depth limit.
  static constexpr unsigned kMaximumDepth = 250;

  JXType(const JXType&) = delete;
  JXType& operator=(const JXType&) = delete;
  virtual ~JXType() = default;

  /// Whether this class parses encodings that begin with `character`. Subclasses hide this
  /// function; none is of this class itself.
  static bool supportsEncoding(char /*character*/) { return false; }

  /// The text of this node without its qualifiers. Valid as long as the node.
  std::string_view encoding() const { return {encoding_.get(), length_}; }
  /// The qualifiers of this node.
  JXTypeQualifiers qualifiers() const { return JXTypeQualifiers{qualifiers_}; }

  /// The type as a C declaration. `padding` requests a blank after the head if the declarator needs
  /// one. Time is linear in the length of the result.
  JXTypeDescription descriptionWithPadding(bool padding) const;
  /// The same without the qualifiers of this node; those of its parts are kept.
  JXTypeDescription _descriptionWithPadding(bool padding) const;
  /// Head and tail, without padding: `int[4]`.
  std::string description(JXTypeBodies bodies = JXTypeBodies::all) const;

  /// Appends the head of descriptionWithPadding() to `out`.
  void appendHead(std::string& out, bool padding, JXTypeBodies bodies = JXTypeBodies::all) const;
  /// Appends the tail of descriptionWithPadding() to `out`.
  void appendTail(std::string& out) const { appendOwnTail(out); }

  /// The bytes of the range [start, end), which must lie in one text.
  static std::string_view stringBetweenStart(const char* start, const char* end);
  /// Parses the decimal number at the cursor, modulo 2^64, and moves the cursor past it. 0 when
  /// there are no digits.
  static std::uint64_t numberFromEncoding(JXTypeCursor& cursor);

  /// Deep equality of class, encoding, qualifiers and all properties.
  bool operator==(const JXType& other) const;

 protected:
  /// Restricts the public constructors of subclasses to this family of classes.
  struct Key {
    explicit Key() = default;
  };

  /// `height` is the number of containers on the longest path down, including this node.
  JXType(SharedText encoding, JXTypeQualifiers qualifiers, unsigned height, bool isMarked = false);

  virtual void appendOwnHead(std::string& out, bool padding, JXTypeBodies bodies) const = 0;
  virtual void appendOwnTail(std::string& out) const = 0;
  /// Compares the members of a subclass. `other` is of the same class.
  virtual bool hasSameParts(const JXType& other) const = 0;

  /// Whether the parts `left` and `right` of two nodes of the same encoding are equal. Compares
  /// each byte of the encoding once, whatever the depth of the trees.
  static bool areSame(const JXType& left, const JXType& right);

  unsigned height() const { return height_; }
  /// The height of a node above `part`. Throws std::invalid_argument when `part` is null,
  /// std::length_error when the tree would be higher than kMaximumDepth.
  static unsigned heightOver(const std::shared_ptr<JXType>& part);
  /// A flag for subclasses, stored here because it takes no space here.
  bool isMarked() const { return isMarked_; }

 private:
  std::uint64_t length_ : 44;
  std::uint64_t qualifiers_ : 9;
  std::uint64_t height_ : 8;
  std::uint64_t isMarked_ : 1;
  std::shared_ptr<const char> encoding_;
};

/// Parses the first type in `encoding`, which may be malformed: there are no errors. Null only for
/// an empty text. The text after the first type is ignored, but the whole text is copied once, and
/// the copy lives as long as a node that needs it. See JXTypeWithEncoding() in JXTypeCursor.h.
///
/// Time is linear in the text. Memory: about 20 bytes per input byte, at most 73 (bit fields
/// without a width); up to 90 during parsing, and three to four times that for a text made to be
/// parsed as often as JXTypeParse allows. See bench/EncodingHeapBenchmark.cpp.
TAVLEN_API std::shared_ptr<JXType> JXTypeForEncoding(std::string_view encoding);

/// The node for `v`.
TAVLEN_API std::shared_ptr<JXType> JXTypeVoid();

}  // namespace tavlen
