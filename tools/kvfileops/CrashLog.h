#pragma once

#include <set>
#include <string>
#include <string_view>

/// Which app a crash log is about, from its name and its beginning. The platform writes the logs:
/// "*.ips" begins with a line of JSON, "*.crash" with lines of "Key: value".
namespace tavlen::fileops {

/// The names of an app in crash logs.
struct CrashLogSubject {
  std::string bundleID;
  std::set<std::string> executables;
};

/// Whether a file of this name is a crash log.
bool isCrashLogName(std::string_view fileName);

/// Whether a log is named after the app: its name, or the part after a "_", is the bundle
/// identifier or the name of an executable, up to the end or to the date
/// ("Notes-2021-05-01-120000.ips").
bool isNamedAfter(const CrashLogSubject& subject, std::string_view fileName);

/// Whether the log that begins with `head` says that it is about the app.
bool isAbout(const CrashLogSubject& subject, std::string_view head);

}  // namespace tavlen::fileops
