#include "cli/terminal/ShownText.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "tavlen/device/Process.h"
#include "tavlen/foundation/errors/LocalizedError.h"
#include "tavlen/foundation/files/TemporaryDirectory.h"
#include "tavlen/foundation/files/TemporaryFile.h"
#include "tavlen/foundation/files/URL.h"
#include "tavlen/foundation/text/Characters.h"

namespace tavlen::cli {

namespace {

constexpr std::string_view kItemsFolder = TemporaryDirectory::kItemsFolder;

bool isTemporary(std::string_view path) { return path.find(kItemsFolder) != path.npos; }

std::string_view withoutFirst(std::string_view path) {
  const std::size_t slash = path.find('/');
  return slash == path.npos ? std::string_view() : path.substr(slash + 1);
}

/// A new item gets its name only when it is complete. Until then, users know the folder around it.
std::string withoutDraftName(std::string_view path) {
  const std::size_t begin = path.find("/" + std::string(kTemporaryPrefix));
  if (begin == path.npos) return std::string(path);
  const std::size_t end = std::min(path.find('/', begin + 1), path.size());
  return std::string(path.substr(0, begin)).append(path.substr(end));
}

/// The part of a path that means something to the user: what lies inside a temporary item, or the
/// folder that holds the temporary items.
std::string withoutTemporaryFolder(std::string_view path) {
  const std::size_t items = path.find(kItemsFolder);
  if (items == path.npos) return withoutDraftName(path);
  std::string_view inside = withoutFirst(withoutFirst(path.substr(items)));
  // An item that is being made has its identifier as its name.
  constexpr std::size_t kIdentifier = 36;
  if (inside.find('/') == kIdentifier) inside = withoutFirst(inside);
  return std::string(inside.empty() ? path.substr(0, items > 1 ? items - 1 : items) : inside);
}

std::string textOf(const std::filesystem::filesystem_error& error) {
  const std::string& first = error.path1().native();
  const std::string& second = error.path2().native();
  const std::string& path = isTemporary(first) && !second.empty() ? second : first;
  const std::string reason = error.code().message();
  return path.empty() ? reason : withoutTemporaryFolder(path) + ": " + reason;
}

std::string textOf(const std::system_error& error) {
  const std::string_view text = error.what();
  const std::string reason = ": " + error.code().message();
  if (!text.ends_with(reason)) return std::string(text);
  return withoutTemporaryFolder(text.substr(0, text.size() - reason.size())) +
         (error.code() == std::errc::illegal_byte_sequence ? ": is not UTF-8" : reason);
}

std::string textOf(const Process::Error& error) {
  const std::string number = std::to_string(error.number());
  switch (error.which()) {
    case Process::Error::Case::posixSpawn:
      return "cannot be started: " + std::generic_category().message(error.number());
    case Process::Error::Case::waitpid:
      return "its end cannot be awaited: " + std::generic_category().message(error.number());
    case Process::Error::Case::signalled:
      return "was ended by signal " + number;
    case Process::Error::Case::terminated:
      return "ended with status " + number;
    case Process::Error::Case::notLaunched:
      break;
  }
  return "was not started";
}

std::string textOf(const LocalizedError& error) {
  std::string text = error.description();
  for (const std::string& value : error.payload()) {
    const auto path = URL{value}.path();
    const std::size_t place = path ? text.find(value) : text.npos;
    if (place != text.npos) {
      text.replace(place, value.size(), path->lexically_normal().native());
    }
  }
  return text;
}

std::string wholeText(const std::exception& error) {
  using FileError = std::filesystem::filesystem_error;
  if (const auto* e = dynamic_cast<const FileError*>(&error)) return textOf(*e);
  if (const auto* e = dynamic_cast<const std::system_error*>(&error)) return textOf(*e);
  if (const auto* e = dynamic_cast<const Process::Error*>(&error)) return textOf(*e);
  if (const auto* e = dynamic_cast<const LocalizedError*>(&error)) return textOf(*e);
  if (const auto* e = dynamic_cast<const DescribedError*>(&error)) return e->description();
  return error.what();
}

}  // namespace

std::string errorText(const std::exception& error) {
  std::string text = wholeText(error);
  // The text may become that of another exception, which would end at a NUL.
  for (std::size_t i = text.find('\0'); i != text.npos; i = text.find('\0', i)) {
    text.replace(i, 1, "\\x00");
  }
  return text;
}

std::string shownPath(const std::filesystem::path& path) {
  return withoutTemporaryFolder(path.native());
}

std::string shownLine(std::string_view message) {
  constexpr std::size_t kMost = 600;
  constexpr std::size_t kBegin = 400;
  constexpr std::size_t kEnd = 150;
  if (message.size() <= kMost) return escapedForTerminal(message);
  std::size_t begin = kBegin;
  while (begin > 0 && isUTF8Continuation(message[begin])) --begin;
  std::size_t end = message.size() - kEnd;
  while (end < message.size() && isUTF8Continuation(message[end])) ++end;
  return escapedForTerminal(message.substr(0, begin)) + "\u2026" +
         escapedForTerminal(message.substr(end));
}

}  // namespace tavlen::cli
