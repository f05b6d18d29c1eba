#pragma once

#include <set>
#include <string>
#include <string_view>

/// What can be told of a crash log without reading all of it. The logs are the platform's: "*.ips"
/// begins with a line of JSON, "*.crash" with lines of "Key: value".
namespace tavlen::fileops {

/// An app as crash logs name it.
struct CrashLogSubject {
  std::string bundleID;
  std::set<std::string> executables;
};

bool isCrashLogName(std::string_view fileName);

/// Whether a log is called after the app: its name, or what follows "_", is the bundle identifier
/// or an executable's, up to the end or to the date ("Notes-2021-05-01-120000.ips").
bool isNamedAfter(const CrashLogSubject& subject, std::string_view fileName);

/// Whether the log that begins with `head` says that it is the app's.
bool isAbout(const CrashLogSubject& subject, std::string_view head);

}  // namespace tavlen::fileops
