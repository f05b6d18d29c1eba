#include "kvfileops/CrashLog.h"

#include <algorithm>
#include <optional>
#include <tuple>

#include "tavlen/foundation/json/JSONDecoder.h"
#include "tavlen/foundation/text/Characters.h"

namespace tavlen::fileops {

namespace {

/// The first line of an .ips file. Other members are ignored.
struct IPSHeader {
  std::optional<std::string> bundleID;
  std::optional<std::string> appName;

  static constexpr auto codedFields() {
    return std::tuple{optionalField("bundleID", &IPSHeader::bundleID),
                      optionalField("app_name", &IPSHeader::appName)};
  }
};

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r";
  const std::size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

/// The name of "Notes [123]".
std::string_view withoutPID(std::string_view process) {
  const std::size_t bracket = process.rfind(" [");
  if (bracket == std::string_view::npos || !process.ends_with(']')) return process;
  return trimmed(process.substr(0, bracket));
}

bool stands(std::string_view name, std::string_view stem) {
  for (std::size_t at = stem.find(name); at != std::string_view::npos;
       at = stem.find(name, at + 1)) {
    const std::string_view rest = stem.substr(at + name.size());
    // "notes-lite-2021-..." is about another app than "notes-2021-...".
    const bool ends =
        rest.empty() || (rest.size() > 1 && (rest[0] == '-' || rest[0] == '_') && isDigit(rest[1]));
    if (ends && (at == 0 || stem[at - 1] == '_')) return true;
  }
  return false;
}

bool isExecutable(const CrashLogSubject& subject, std::string_view name) {
  return subject.executables.contains(std::string(name));
}

bool isAboutByJSON(const CrashLogSubject& subject, std::string_view line) {
  try {
    const auto header = decodeJSON<IPSHeader>(line);
    return header.bundleID == subject.bundleID ||
           (header.appName && isExecutable(subject, *header.appName));
  } catch (const DecodingError&) {
    return false;  // the line is not JSON
  }
}

bool isAboutByLine(const CrashLogSubject& subject, std::string_view line) {
  constexpr std::string_view kIdentifier = "Identifier:";
  constexpr std::string_view kProcess = "Process:";
  if (line.starts_with(kIdentifier)) {
    return trimmed(line.substr(kIdentifier.size())) == subject.bundleID;
  }
  return line.starts_with(kProcess) &&
         isExecutable(subject, withoutPID(trimmed(line.substr(kProcess.size()))));
}

}  // namespace

bool isCrashLogName(std::string_view fileName) {
  return fileName.ends_with(".ips") || fileName.ends_with(".crash");
}

bool isNamedAfter(const CrashLogSubject& subject, std::string_view fileName) {
  const std::string_view stem = fileName.substr(0, fileName.rfind('.'));
  return stands(subject.bundleID, stem) ||
         std::any_of(subject.executables.begin(), subject.executables.end(),
                     [&](const std::string& executable) { return stands(executable, stem); });
}

bool isAbout(const CrashLogSubject& subject, std::string_view head) {
  for (bool isFirst = true; !head.empty(); isFirst = false) {
    const std::string_view line = head.substr(0, head.find('\n'));
    head.remove_prefix(std::min(line.size() + 1, head.size()));
    if (trimmed(line).empty()) return false;  // the header ends
    if (isFirst && line.starts_with('{') && isAboutByJSON(subject, line)) return true;
    if (isAboutByLine(subject, line)) return true;
  }
  return false;
}

}  // namespace tavlen::fileops
