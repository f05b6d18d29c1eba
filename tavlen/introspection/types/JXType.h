#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "tavlen/introspection/types/JXTypeDescription.h"
#include "tavlen/introspection/types/JXTypeQualifiers.h"
#include "tavlen/introspection/types/JXTypeText.h"

namespace tavlen {

class JXTypeCursor;

/// A type of C or Objective-C as the run time encodes it: a node of a tree that owns its parts.
///
/// Trees are read from encodings by JXTypeForEncoding() and JXTypeWithEncoding(), and built by the
/// `initWith...` functions of the classes below this one. Nothing in a tree changes once it is
/// made, but for the width of a bit field. Plain nodes (`i`, `@`, `*`) are shared among trees and
/// live as long as the process: their pointers count nothing.
///
/// The encodings of a tree's nodes are views of one text, which lives as long as any of them.
/// Bytes have no meaning but the encoding's own: what is not UTF-8 stays as it is.
///
/// Threads: any; a tree may be read by several at once while none sets the width of a bit field.
class JXType {
 public:
  /// How many nodes stand on the longest way from the root of a tree down to a node that holds
  /// others. Where a text nests deeper, a basic node of the one character stands in place of a type
  /// that would hold others. A tree of this height is a JSON document that the encoder still
  /// writes.
  static constexpr unsigned kMaximumDepth = 250;

  JXType(const JXType&) = delete;
  JXType& operator=(const JXType&) = delete;
  virtual ~JXType() = default;

  /// No encoding is of this class itself.
  static bool supportsEncoding(char /*character*/) { return false; }

  /// The text that this node covers, without its qualifiers. Valid as long as the node.
  std::string_view encoding() const { return {encoding_.get(), length_}; }
  JXTypeQualifiers qualifiers() const { return JXTypeQualifiers{qualifiers_}; }

  /// The type as C declares it; `padding` asks for a blank behind the head where a declarator will
  /// follow that needs one. The time is in proportion to the length of what is printed.
  JXTypeDescription descriptionWithPadding(bool padding) const;
  /// The same without the qualifiers of this node; its parts keep theirs.
  JXTypeDescription _descriptionWithPadding(bool padding) const;
  /// Head and tail, without padding: `int[4]`.
  std::string description() const;

  /// Appends the head, or the tail, of descriptionWithPadding() to `out`.
  void appendHead(std::string& out, bool padding) const;
  void appendTail(std::string& out) const { appendOwnTail(out); }

  /// The bytes from `start` up to but not including `end`, which lie in one text.
  static std::string_view stringBetweenStart(const char* start, const char* end);
  /// The number whose decimal digits stand at the cursor, which is moved behind them; modulo 2^64.
  /// 0 where there are none.
  static std::uint64_t numberFromEncoding(JXTypeCursor& cursor);

  /// Whether the trees are the same in class, encoding, qualifiers and all properties.
  bool operator==(const JXType& other) const;

 protected:
  /// Lets only the classes of the family make nodes.
  struct Key {
    explicit Key() = default;
  };

  /// `height` counts the nodes that hold others, this one included, on the longest way down.
  JXType(JXTypeText encoding, JXTypeQualifiers qualifiers, unsigned height, bool isMarked = false);

  virtual void appendOwnHead(std::string& out, bool padding) const = 0;
  virtual void appendOwnTail(std::string& out) const = 0;
  /// `other` is of the same class, and what this class stores is the same.
  virtual bool hasSameParts(const JXType& other) const = 0;

  /// Whether the parts `left` and `right` of two nodes of the same encoding are the same. Asks for
  /// each byte of the encoding once, however deep the trees are.
  static bool areSame(const JXType& left, const JXType& right);

  unsigned height() const { return height_; }
  /// The height of a node that is to be built over `part`. Throws std::invalid_argument where there
  /// is no part, std::length_error where the tree would be higher than kMaximumDepth.
  static unsigned heightOver(const std::shared_ptr<JXType>& part);
  /// A truth value that a class below keeps here, where it takes no room.
  bool isMarked() const { return isMarked_; }

 private:
  std::shared_ptr<const char> encoding_;
  std::uint64_t length_ : 44;
  std::uint64_t qualifiers_ : 9;
  std::uint64_t height_ : 8;
  std::uint64_t isMarked_ : 1;
};

/// Reads the first type of `encoding`, which may be malformed in any way: there are no errors. Null
/// for an empty text only. What follows the first type is not looked at, but the text is copied
/// whole, once, and lives as long as a node that needs it.
///
/// The work is in proportion to the text that is read. What is kept of it takes 17 bytes for a byte
/// of plain members, 20 for a byte of mixed ones, 73 for a byte of bit fields without a width,
/// which are the smallest nodes of their own. While it is read it takes up to 90, and three to four
/// times as much in a text that is made to be read again as often as JXTypeParse allows.
/// JXTypeWithEncoding() in JXTypeCursor.h says more.
std::shared_ptr<JXType> JXTypeForEncoding(std::string_view encoding);

/// The node for `v`.
std::shared_ptr<JXType> JXTypeVoid();

}  // namespace tavlen
