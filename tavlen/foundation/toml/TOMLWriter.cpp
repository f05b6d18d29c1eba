#include "tavlen/foundation/toml/TOMLWriter.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "tavlen/foundation/coding/CodingError.h"
#include "tavlen/foundation/coding/DateText.h"
#include "tavlen/foundation/text/EscapedText.h"
#include "tavlen/foundation/text/NumberText.h"
#include "tavlen/foundation/toml/detail/TOMLText.h"

namespace tavlen {

namespace {

/// The most parts of a key that the writer makes; with more, lines are hard to compare.
constexpr std::size_t kMostParts = 3;

/// The text of a date, if TOML holds it.
std::optional<std::string> dateText(Date date) {
  constexpr std::size_t kDigits = std::string_view("2026-01-31T12:00:00.123456789Z").size();
  const double seconds = date.secondsSinceReferenceDate;
  if (seconds == 0 && std::signbit(seconds)) return std::nullopt;
  std::optional<std::string> text = textFromDate(date);
  if (!text || text->size() > kDigits) return std::nullopt;
  return text;
}

bool hasLines(const std::string& text) { return text.find('\n') != std::string::npos; }

/// Appends a value on one line until the line is longer than `limit`.
struct LineWriter {
  std::string& out;
  std::size_t limit;
  /// Whether texts may have line breaks, which are then escaped.
  bool takesLines = false;

  /// Returns whether the value fits. If not, a part of it is written.
  bool write(const TOMLNode& node) {
    return std::visit([this](const auto& value) { return append(value); }, node.value) &&
           out.size() <= limit;
  }

 private:
  /// Whether a text might fit. Long ones are not written in vain at each level of nesting.
  bool hasRoom(const std::string& text) const { return out.size() + text.size() <= limit; }

  bool append(const std::string& text) {
    if (!hasRoom(text) || (!takesLines && hasLines(text))) return false;
    appendTOMLString(out, text);
    return true;
  }
  bool append(std::int64_t value) {
    out += std::to_string(value);
    return true;
  }
  bool append(double value) {
    if (std::isnan(value)) {
      out += "nan";  // readers ignore the sign
    } else {
      appendDescription(out, value);
    }
    return true;
  }
  bool append(bool value) {
    out += value ? "true" : "false";
    return true;
  }
  bool append(Date date) {
    const auto text = dateText(date);
    if (!text) throw EncodingError::invalidValue("a date that TOML cannot hold");
    out += *text;
    return true;
  }
  bool append(const TOMLNode::Array& items) {
    std::string_view separator = "[";
    for (const TOMLNode& item : items) {
      out += separator;
      separator = ", ";
      if (!write(item)) return false;
    }
    out += items.empty() ? "[]" : "]";
    return true;
  }
  bool append(const TOMLNode::Table& table) {
    std::string_view separator = "{ ";
    for (const TOMLNode::Member& member : table) {
      if (!hasRoom(member.key)) return false;
      out += separator;
      separator = ", ";
      appendTOMLKey(out, member.key);
      out += " = ";
      if (!write(member.value)) return false;
    }
    out += table.empty() ? "{}" : " }";
    return true;
  }
};

/// Appends a value to a line, and continues on further lines if it does not fit.
class ValueWriter {
 public:
  /// The line begins at `lineBegin` in `out`.
  ValueWriter(std::string& out, std::size_t lineBegin) : out_(out), lineBegin_(lineBegin) {}

  void write(const TOMLNode& node) {
    const std::size_t begin = out_.size();
    if (LineWriter{out_, lineBegin_ + TOMLWriter::kLineLength}.write(node)) return;
    out_.resize(begin);
    if (const auto* items = std::get_if<TOMLNode::Array>(&node.value); items && !items->empty()) {
      appendItems(*items);
    } else if (const auto* table = std::get_if<TOMLNode::Table>(&node.value);
               table && !table->empty()) {
      appendMembers(*table);
    } else if (const auto* text = std::get_if<std::string>(&node.value); text && hasLines(*text)) {
      appendTOMLLines(out_, *text);
      lineBegin_ = out_.rfind('\n') + 1;
    } else {
      LineWriter{out_, std::string::npos}.write(node);
    }
  }

 private:
  void appendItems(const TOMLNode::Array& items) {
    out_ += '[';
    indent_ += 2;
    for (const TOMLNode& item : items) {
      newLine();
      write(item);
      out_ += ',';
    }
    indent_ -= 2;
    newLine();
    out_ += ']';
  }

  /// On one line, because TOML allows line ends only within the members' own values.
  void appendMembers(const TOMLNode::Table& table) {
    std::string_view separator = "{ ";
    for (const TOMLNode::Member& member : table) {
      out_ += separator;
      separator = ", ";
      appendTOMLKey(out_, member.key);
      out_ += " = ";
      write(member.value);
    }
    out_ += " }";
  }

  void newLine() {
    out_ += '\n';
    lineBegin_ = out_.size();
    // Deep nesting would make most of the text blanks.
    constexpr std::size_t kMostBlanks = 40;
    out_.append(std::min(indent_, kMostBlanks), ' ');
  }

  std::string& out_;
  std::size_t lineBegin_;
  std::size_t indent_ = 0;
};

/// Whether a member fits on a line.
bool fits(const std::string& key, const TOMLNode& value) {
  std::string line = key + " = ";
  return LineWriter{line, TOMLWriter::kLineLength}.write(value);
}

}  // namespace

bool hasTOMLForm(Date date) { return dateText(date).has_value(); }

std::string lineFromTOML(const TOMLNode& value) {
  std::string line;
  LineWriter{line, std::string::npos, true}.write(value);
  return line;
}

void TOMLWriter::header(std::string_view opening, std::string_view name, std::string_view closing) {
  if (!out_.empty()) out_ += '\n';
  out_.append(opening).append(name).append(closing).append("\n");
}

void TOMLWriter::table(std::string_view name) { header("[", name, "]"); }

void TOMLWriter::arrayElement(std::string_view name) { header("[[", name, "]]"); }

void TOMLWriter::comment(std::string_view text) {
  out_.append("# ").append(escapedForTerminal(text)).append("\n");
}

void TOMLWriter::member(std::string_view key, const TOMLNode& value) {
  std::string text;
  appendTOMLKey(text, key);
  line(text, 1, value);
}

void TOMLWriter::spreadMember(std::string_view key, const TOMLNode& table) {
  if (dottedKeys_ == DottedKeys::avoided) return member(key, table);
  std::string text;
  appendTOMLKey(text, key);
  dottedLines(text, 1, std::get<TOMLNode::Table>(table.value));
}

void TOMLWriter::line(const std::string& key, std::size_t parts, const TOMLNode& value) {
  const auto* table = std::get_if<TOMLNode::Table>(&value.value);
  if (table != nullptr && dottedKeys_ == DottedKeys::allowed && parts < kMostParts &&
      !table->empty() && !fits(key, value))
    return dottedLines(key, parts, *table);
  if (parts > 1) ++dottedKeyCount_;
  const std::size_t begin = out_.size();
  out_.append(key).append(" = ");
  ValueWriter(out_, begin).write(value);
  out_ += '\n';
}

void TOMLWriter::dottedLines(const std::string& prefix, std::size_t parts,
                             const TOMLNode::Table& table) {
  for (const TOMLNode::Member& member : table) {
    std::string key = prefix + ".";
    appendTOMLKey(key, member.key);
    line(key, parts + 1, member.value);
  }
}

}  // namespace tavlen
