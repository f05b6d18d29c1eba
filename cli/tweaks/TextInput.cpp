#include "cli/tweaks/TextInput.h"

#include <algorithm>
#include <exception>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <variant>

#include "cli/arguments/ArchiveFile.h"
#include "cli/arguments/StoredItem.h"
#include "cli/terminal/CaretLine.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/ReportedError.h"
#include "cli/terminal/ShownText.h"
#include "cli/tweaks/AttachedFiles.h"
#include "cli/tweaks/TextMessages.h"
#include "cli/tweaks/TextTypes.h"
#include "tavlen/device/DeviceFiles.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/text/TextLines.h"
#include "tavlen/foundation/text/Unicode.h"
#include "tavlen/tweaktext/TweakTextReader.h"

namespace tavlen::cli {

namespace {

namespace fs = std::filesystem;

/// Reads one text and what it names.
class Reader {
 public:
  Reader(const TextSource& source, const DiagnosticSink& report)
      : source_(source), messages_(source.file, report) {
    input_.file = source.file;
    input_.bytes = source.bytes;
    input_.folder = source.folder;
  }

  std::optional<TextInput> read() {
    auto read = readTweakText(source_.bytes, [&](const TOMLError& error) {
      messages_.error(error.position(), "malformed-text", error.text());
    });
    if (!read) return std::nullopt;
    TweakText& text = input_.text = *std::move(read);
    lookUpTypes(text, messages_);
    if (text.icon) readIcon(*text.icon);
    if (text.script) readScript(*text.script);
    if (messages_.hasErrors()) return std::nullopt;
    addFiles();
    return std::move(input_);
  }

 private:
  /// The bytes of a file that the text names.
  std::optional<std::string> contentsOf(const FileReference& reference) {
    const DeviceRoot root = DeviceRoot::shared();
    const auto file = pathInside(root, input_.folder, reference.path);
    if (!file) {
      messages_.error(reference.position, "outside-file",
                      reference.path + ": lies outside of the text's folder");
      return std::nullopt;
    }
    try {
      return readFile(openedFile(root, *file));
    } catch (const std::exception& error) {
      messages_.error(reference.position, "unreadable-file", errorText(error));
      return std::nullopt;
    }
  }

  void readIcon(const FileReference& reference) {
    const auto bytes = contentsOf(reference);
    if (!bytes) return;
    input_.icon = Image::decode(*bytes);
    if (!input_.icon)
      messages_.error(reference.position, "malformed-image",
                      reference.path + ": is not a PNG or JPEG image");
  }

  void readScript(const FileReference& reference) {
    const auto bytes = contentsOf(reference);
    if (!bytes) return;
    // As a stored script is read: without a byte order mark.
    input_.script = textFromBytes(*bytes);
    if (!input_.script)
      messages_.error(reference.position, "malformed-script", reference.path + ": is not UTF-8");
  }

  void addFiles() {
    const DeviceRoot root = DeviceRoot::shared();
    if (source_.isFolder) {
      input_.files = attachedFiles(input_.folder, fs::path(input_.file).parent_path().string());
      for (const char* top : kAttachedFolders) {
        const auto folder = pathInside(root, input_.folder, top);
        if (folder && fs::is_directory(root.status(*folder))) input_.wholeFolders.insert(top);
      }
    }
    for (const BoxedOptional<Hook>& hook : input_.text.manifest._hooks) {
      for (const auto& entry : hook->_args) {
        forEachParameter(entry.second.value, [&](const Parameter& each, const ParameterPath&) {
          if (const auto* data = std::get_if<DataParameter>(&each)) addResource(data->filename);
          if (const auto* image = std::get_if<ImageParameter>(&each)) addResource(image->filename);
        });
      }
    }
  }

  /// Adds the file of a resource that a hook names, if it exists.
  void addResource(const std::string& name) {
    const DeviceRoot root = DeviceRoot::shared();
    const fs::path resources = TweakFile::resourcesFolder;
    const auto file = pathInside(root, input_.folder / resources, name);
    if (file && fs::is_regular_file(root.status(*file)))
      input_.files.insert((resources / name).lexically_normal().string());
  }

  const TextSource& source_;
  TextMessages messages_;
  TextInput input_;
};

}  // namespace

TextSource textSource(const std::string& argument) {
  TextSource source;
  source.isFolder = argument != "-" && fs::is_directory(argument);
  const std::string file = source.isFolder ? (fs::path(argument) / kTextFile).string() : argument;
  source.bytes = readInput(file);
  source.file = shownInput(file);
  if (isZIP(source.bytes)) throw std::runtime_error(source.file + ": " + kOtherArchive);
  std::error_code ignored;
  source.folder =
      fs::is_regular_file(file, ignored) ? fs::absolute(file).parent_path() : fs::path(".");
  return source;
}

std::string TextInput::excerptAt(TextPosition position) const {
  std::string_view line = bytes;
  for (std::size_t i = 1; i < position.line; ++i)
    line.remove_prefix(std::min(line.find('\n'), line.size() - 1) + 1);
  line = line.substr(0, line.find_first_of("\r\n"));
  std::size_t column = 1;
  std::size_t characters = 0;
  for (const char byte : line) {
    // Columns of texts count characters, those of the line with the caret UTF-16 units.
    const std::size_t units = utf16UnitsOf(byte);
    if (units != 0 && ++characters == position.column) break;
    column += units;
  }
  return caretLine(line, column);
}

Diagnostic TextInput::at(TextPosition position) const {
  Diagnostic where;
  where.file = file;
  where.line = position.line;
  where.column = position.column;
  return where;
}

std::string TextInput::pathOf(const std::string& name) const {
  return (fs::path(file).parent_path() / name).string();
}

std::string TextInput::scriptPath() const {
  return pathOf(text.script ? text.script->path : TweakFile::scriptFile);
}

std::optional<TextInput> readTextInput(const TextSource& source, const DiagnosticSink& report) {
  return Reader(source, report).read();
}

TextInput readTextInput(const std::string& argument) {
  const TextSource source = textSource(argument);
  std::optional<TextInput> input = readTextInput(source, print);
  if (!input) throw ReportedError(source.file + ": has errors");
  return *std::move(input);
}

}  // namespace tavlen::cli
