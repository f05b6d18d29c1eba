#include "cli/AppArgument.h"

#include <filesystem>
#include <system_error>

namespace tavlen::cli {

bool isPath(const std::string& text) {
  std::error_code ignored;
  return text.find('/') != std::string::npos || std::filesystem::is_directory(text, ignored);
}

std::shared_ptr<IPA> appArgument(const std::string& text) {
  if (!isPath(text)) return IPA::findWithBundleID(text);
  try {
    return IPA::openAt(text);
  } catch (const IPA::Error& error) {
    throw std::runtime_error(text + ": " + error.description());
  }
}

std::runtime_error withInfoPath(const IPA& ipa, const DecodingError& error) {
  return std::runtime_error((ipa.appDir() / "Info.plist").string() + ": " + error.description());
}

Info readInfo(const IPA& ipa) {
  return namingInfo(ipa, [&] { return ipa.infoManager().info(); });
}

}  // namespace tavlen::cli
