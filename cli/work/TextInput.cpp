#include "cli/work/TextInput.h"

#include <exception>
#include <map>
#include <stdexcept>
#include <utility>
#include <variant>

#include "cli/terminal/Console.h"
#include "cli/terminal/ShownText.h"
#include "cli/work/AttachedFiles.h"
#include "cli/work/TextMessages.h"
#include "cli/work/TextTypes.h"
#include "tavlen/device/DeviceFiles.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/text/Unicode.h"
#include "tavlen/tweaktext/TweakTextReader.h"

namespace tavlen::cli {

namespace {

namespace fs = std::filesystem;

/// Reads one text and what it names.
class Reader {
 public:
  Reader(const std::string& argument, fs::path target)
      : file_(fileOf(argument)),
        isFolder_(file_ != argument),
        target_(std::move(target)),
        messages_(file_ == "-" ? "standard input" : file_) {}

  std::optional<TextInput> read() {
    const std::string bytes = readInput(file_);
    try {
      text_ = readTweakText(bytes);
    } catch (const TOMLError& error) {
      messages_.error(error.position(), error.text());
      return std::nullopt;
    }
    input_.folder = file_ == "-" ? "." : fs::absolute(file_).parent_path();
    lookUpTypes(text_, messages_);
    if (text_.icon) readIcon(*text_.icon);
    if (text_.script) readScript(*text_.script);
    if (messages_.hasErrors()) return std::nullopt;
    addFiles();
    checkHooks();
    input_.manifest = std::move(text_.manifest);
    return std::move(input_);
  }

 private:
  static std::string fileOf(const std::string& argument) {
    if (argument == "-" || !fs::is_directory(argument)) return argument;
    return (fs::path(argument) / kTextFile).string();
  }

  /// The bytes of a file that the text names.
  std::optional<std::string> contentsOf(const FileReference& reference) {
    const DeviceRoot root = DeviceRoot::shared();
    const auto file = pathInside(root, input_.folder, reference.path);
    if (!file) {
      messages_.error(reference.position, reference.path + ": lies outside of the text's folder");
      return std::nullopt;
    }
    try {
      return readFile(openedFile(root, *file));
    } catch (const std::exception& error) {
      messages_.error(reference.position, errorText(error));
      return std::nullopt;
    }
  }

  void readIcon(const FileReference& reference) {
    const auto bytes = contentsOf(reference);
    if (!bytes) return;
    input_.icon = Image::decode(*bytes);
    if (!input_.icon)
      messages_.error(reference.position, reference.path + ": is not a PNG or JPEG image");
  }

  void readScript(const FileReference& reference) {
    const auto bytes = contentsOf(reference);
    if (!bytes) return;
    // As a stored script is read: without a byte order mark.
    input_.script = textFromBytes(*bytes);
    if (!input_.script) messages_.error(reference.position, reference.path + ": is not UTF-8");
  }

  void addFiles() {
    if (!isFolder_) return;
    input_.files = attachedFiles(input_.folder);
    const DeviceRoot root = DeviceRoot::shared();
    for (const char* top : kAttachedFolders) {
      if (fs::is_directory(root.status(input_.folder / top))) input_.wholeFolders.insert(top);
    }
  }

  void checkHooks() {
    std::map<MethodIdentity, TextPosition> places;
    for (std::size_t i = 0; i < text_.hooks.size(); ++i) {
      const Hook& hook = *text_.manifest._hooks[i];
      const auto [first, isNew] = places.try_emplace(hook.identity(), text_.hooks[i].method);
      if (!isNew) {
        messages_.warning(text_.hooks[i].method,
                          "hooks the same method as the hook at " + description(first->second));
      }
      for (const HookProblem& problem : problemsOf(hook))
        messages_.warning(text_.placeOf(i, problem.place), problem.text);
      for (const auto& [index, box] : hook._args) {
        const ValuePlaces& value = text_.hooks[i].args.at(index);
        forEachParameter(box.value, [&](const Parameter& each, const ParameterPath& path) {
          if (const auto* data = std::get_if<DataParameter>(&each))
            addResource(data->filename, value.at(path));
          if (const auto* image = std::get_if<ImageParameter>(&each))
            addResource(image->filename, value.at(path));
        });
      }
    }
  }

  /// Adds the file of a resource that a hook names, or warns that the tweak will not have it.
  void addResource(const std::string& name, TextPosition position) {
    const DeviceRoot root = DeviceRoot::shared();
    const auto file = pathInside(root, input_.folder / TweakFile::resourcesFolder, name);
    if (!file) {
      return messages_.warning(position, "the resource \"" + name + "\" lies outside of Resources");
    }
    const std::string path =
        (fs::path(TweakFile::resourcesFolder) / name).lexically_normal().string();
    if (fs::is_regular_file(root.status(*file))) {
      input_.files.insert(path);
    } else if (!isKept(path)) {
      messages_.warning(position, "the resource \"" + name + "\" is missing");
    }
  }

  /// Whether the tweak has the resource already, and keeps it.
  bool isKept(const std::string& path) const {
    if (target_.empty() || input_.wholeFolders.contains(TweakFile::resourcesFolder)) return false;
    return fs::is_regular_file(DeviceRoot::shared().status(target_ / path));
  }

  std::string file_;
  bool isFolder_;
  fs::path target_;
  TextMessages messages_;
  TweakText text_;
  TextInput input_;
};

}  // namespace

std::optional<TextInput> readTextInput(const std::string& argument, const fs::path& target) {
  return Reader(argument, target).read();
}

}  // namespace tavlen::cli
