#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/toml/TOMLNode.h"

namespace tavlen {

/// Whether a date reads back from TOML to the bit: those that textFromDate() writes with at most
/// nine digits of a second, but not the negative zero.
TAVLEN_API bool hasTOMLForm(Date date);

/// A value on one line, as it is written after a key; line breaks in texts are escaped. Errors:
/// EncodingError, as TOMLWriter.
TAVLEN_API std::string lineFromTOML(const TOMLNode& value);

/// Writes TOML for people: one member on a line; an array that does not fit on a line has a line
/// for each item, and a table that does not fit is written with dotted keys. readTOML() returns the
/// same values, to the bit, except that all NaN are alike. The text depends on the values only.
///
/// Errors: EncodingError for text that is not UTF-8, and for a date without hasTOMLForm(). The text
/// written so far then stays in `out`. Threads: one object one thread at a time.
class TAVLEN_API TOMLWriter {
 public:
  /// The length of a line, in bytes, from which arrays and tables are written on several.
  static constexpr std::size_t kLineLength = 100;
  /// Whether tables may be written with dotted keys. Readers search the tables that these make one
  /// by one, so a long document must do without.
  enum class DottedKeys { allowed, avoided };

  /// Appends to `out`, which must outlive the writer.
  explicit TOMLWriter(std::string& out, DottedKeys dottedKeys = DottedKeys::allowed)
      : out_(out), dottedKeys_(dottedKeys) {}

  /// Writes "[name]", after an empty line unless it is the first. Its members follow.
  void table(std::string_view name);
  /// Writes "[[name]]" in the same way.
  void arrayElement(std::string_view name);
  /// Writes a line with a comment. Characters that comments cannot hold are escaped.
  void comment(std::string_view text);
  /// Writes a member.
  void member(std::string_view key, const TOMLNode& value);
  /// Writes a member that is a table. Its own members have a line each, however short they are.
  void spreadMember(std::string_view key, const TOMLNode& table);

  /// The number of lines that begin with a dotted key.
  std::size_t dottedKeyCount() const { return dottedKeyCount_; }

 private:
  void header(std::string_view opening, std::string_view name, std::string_view closing);
  void line(const std::string& key, std::size_t parts, const TOMLNode& value);
  void dottedLines(const std::string& prefix, std::size_t parts, const TOMLNode::Table& table);

  std::string& out_;
  DottedKeys dottedKeys_;
  std::size_t dottedKeyCount_ = 0;
};

}  // namespace tavlen
