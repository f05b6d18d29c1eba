#include "cli/classes/ClassDump.h"

#include <algorithm>
#include <exception>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "cli/arguments/ArchiveFile.h"
#include "cli/terminal/Diagnostic.h"
#include "cli/terminal/ProgressLine.h"
#include "cli/terminal/ShownText.h"

namespace tavlen::cli {

namespace {

/// Errors of the file system may already name the file.
std::string namingImage(const ImageArgument& argument, const std::string& text) {
  const std::string prefix = argument.shown() + ": ";
  return text.starts_with(prefix) ? text : prefix + text;
}

/// Leaves the temporary folder of a copy out of what the image's file told.
void showOriginalPaths(ImageDump& dump) {
  for (const std::shared_ptr<ObjCClass>& cls : dump.classes) {
    if (cls->superclassPath) cls->superclassPath = shownPath(cls->superclassPath->str());
  }
}

ImageDump dumpOrError(const ChosenImage& image, const ImageArgument& argument,
                      const std::optional<std::string>& className,
                      const std::shared_ptr<Progress>& progress) {
  // Of its own, because the time limit cancels it.
  const auto own = Progress::discrete(1);
  progress->addChild(own, 1);
  try {
    return dumpedImage(image, argument, className, own);
  } catch (const std::exception& error) {
    if (progress->isCancelled()) {
      throw std::system_error(std::make_error_code(std::errc::operation_canceled),
                              argument.shown());
    }
    ImageDump none;
    none.path = image.name;
    none.error = errorText(error);
    return none;
  }
}

ClassDump dumpOf(const ImageArgument& argument, const std::optional<std::string>& className) {
  // Before the progress line, which would keep signals from ending the wait.
  std::optional<std::string> input;
  if (argument.isStream()) input = readInput(argument.image);
  const ProgressLine line("reading classes of " + argument.shown());
  line.progress()->setTotalUnitCount(!input && isArchive(argument.image) ? 2 : 1);
  const ImageSelection selection(argument, input, line.progress());
  const auto progress = Progress::discrete(static_cast<std::int64_t>(selection.images().size()));
  line.progress()->addChild(progress, 1);
  ClassDump dump;
  dump.faults = selection.faults();
  for (const ChosenImage& image : selection.images()) {
    dump.images.push_back(dumpOrError(image, argument, className, progress));
    if (selection.isCopied()) showOriginalPaths(dump.images.back());
  }
  return dump;
}

}  // namespace

ClassDump dumpClasses(const ImageArgument& argument, const std::optional<std::string>& className) {
  ClassDump dump = dumpOf(argument, className);
  const auto isRead = [](const ImageDump& image) { return !image.error; };
  if (std::any_of(dump.images.begin(), dump.images.end(), isRead)) return dump;
  const ImageDump& first = dump.images.front();
  if (dump.images.size() == 1) throw std::runtime_error(namingImage(argument, *first.error));
  reportFaults(dump, argument);
  throw std::runtime_error(argument.shown() + ": none of its images can be read; " + first.path +
                           ": " + *first.error);
}

bool reportFaults(const ClassDump& dump, const ImageArgument& argument) {
  bool hasFaults = false;
  const auto warn = [&](const std::string& text) {
    print({.severity = Diagnostic::kWarning,
           .message = namingImage(argument, text),
           .code = "unreadable-classes"});
    hasFaults = true;
  };
  for (const std::string& fault : dump.faults) warn(fault);
  for (const ImageDump& image : dump.images) {
    const std::string place = dump.images.size() == 1 ? "" : image.path + ": ";
    if (image.error) warn(place + *image.error);
    for (const std::string& text : image.diagnostics) warn(place + text);
  }
  return hasFaults;
}

}  // namespace tavlen::cli
