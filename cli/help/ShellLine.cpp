#include "cli/help/ShellLine.h"

#include <algorithm>
#include <utility>

namespace tavlen::cli {

namespace {

constexpr std::string_view kBlanks = " \t\n";
/// Where bash's editor begins words of its own, by default.
constexpr std::string_view kBreaks = ":=";
constexpr std::string_view kPlain =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_./,:@%+=";

bool contains(std::string_view characters, char c) {
  return characters.find(c) != std::string_view::npos;
}

bool isPlain(char c) {
  return contains(kPlain, c) || static_cast<unsigned char>(c) >= 0x80;  // a letter in UTF-8
}

std::string escaped(std::string_view text, char quote) {
  std::string shown;
  for (const char c : text) {
    if (quote == '\'' && c == '\'') {
      shown += "'\\'";  // the quote ends, and begins again below
    } else if (quote == '"' ? contains("\"\\$`", c) : quote == 0 && !isPlain(c)) {
      shown += '\\';
    }
    shown += c;
  }
  return shown;
}

}  // namespace

ShellLine ShellLine::read(std::string_view line) {
  ShellLine read;
  bool isInWord = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const char c = line[i];
    if (read.quote == 0 && contains(kBlanks, c)) {
      isInWord = false;
      continue;
    }
    if (!std::exchange(isInWord, true)) {
      read.words.emplace_back();
      read.kept = 0;
    }
    std::string& word = read.words.back();
    if (c == read.quote) {
      read.quote = 0;
    } else if (read.quote == 0 && (c == '\'' || c == '"')) {
      read.quote = c;
      read.kept = word.size();
    } else if (c == '\\' && read.quote != '\'' && i + 1 < line.size()) {
      word += line[++i];
    } else {
      word += c;
      if (read.quote == 0 && contains(kBreaks, c)) read.kept = word.size();
    }
  }
  if (!isInWord) {
    read.words.emplace_back();
    read.kept = 0;
  }
  return read;
}

std::string ShellLine::completion(std::string_view word) const {
  return escaped(word.substr(std::min(kept, word.size())), quote);
}

}  // namespace tavlen::cli
