#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/arguments/AppArgument.h"
#include "cli/classes/AppForReading.h"
#include "cli/commands/Commands.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/ShownText.h"
#include "cli/terminal/TextTable.h"
#include "tavlen/bundles/Executable.h"
#include "tavlen/foundation/files/RandomAccessFile.h"
#include "tavlen/foundation/macho/MachOImage.h"
#include "tavlen/foundation/text/Unicode.h"

namespace tavlen::cli {

namespace {

/// A slice of an executable, in the output.
struct SliceRow {
  std::string architecture;
  std::optional<std::string> platform;
  std::optional<std::string> minimumOS;
  std::optional<bool> isEncrypted;   ///< absent if the load commands cannot be read
  std::optional<std::string> error;  ///< why they cannot

  static constexpr auto codedFields() {
    return std::tuple{requiredField("architecture", &SliceRow::architecture),
                      optionalField("platform", &SliceRow::platform),
                      optionalField("minimumOS", &SliceRow::minimumOS),
                      optionalField("isEncrypted", &SliceRow::isEncrypted),
                      optionalField("error", &SliceRow::error)};
  }
};

/// A row of the output, which describes one executable.
struct Row {
  std::string kind;
  std::string name;
  std::string relativePath;
  std::string path;
  std::vector<SliceRow> slices;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("kind", &Row::kind), requiredField("name", &Row::name),
                      requiredField("relativePath", &Row::relativePath),
                      requiredField("path", &Row::path), requiredField("slices", &Row::slices)};
  }
};

std::optional<std::string> unlessEmpty(std::string text) {
  return text.empty() ? std::nullopt : std::optional(std::move(text));
}

SliceRow rowOf(const std::shared_ptr<const RandomAccessFile>& file, const MachOSlice& slice) {
  SliceRow row;
  row.architecture = slice.architecture();
  try {
    const MachOImage image(file, slice);
    row.platform = unlessEmpty(image.platform());
    row.minimumOS = unlessEmpty(image.minimumOS());
    row.isEncrypted = image.isEncrypted();
  } catch (const MachOImage::Error& error) {
    row.error = wellFormedUTF8(errorText(error));
  }
  return row;
}

Row rowOf(std::string_view kind, const Executable& executable) {
  Row row = {std::string(kind),
             wellFormedUTF8(executable.name()),
             wellFormedUTF8(executable.relativePath()),
             wellFormedUTF8(shownPath(executable.path())),
             {}};
  const auto file = std::make_shared<const RandomAccessFile>(executable.path());
  if (const auto machO = MachOFile::read(*file)) {
    for (const MachOSlice& slice : machO->slices()) row.slices.push_back(rowOf(file, slice));
  }
  return row;
}

std::vector<Row> rowsOf(IPA& ipa) {
  std::vector<Row> rows = {rowOf("main", *ipa.mainExecutable())};
  for (const auto& executable : ipa.bundleExecutables()) {
    rows.push_back(rowOf("bundle", *executable));
  }
  for (const auto& executable : ipa.dynamicExecutables()) {
    rows.push_back(rowOf("dynamic", *executable));
  }
  return rows;
}

std::vector<Row> rowsOfApp(const std::string& name) {
  const AppForReading app(name, AppForReading::Files::images);
  for (const std::string& fault : app.faults()) {
    printWarning(std::string(name).append(": ").append(fault));
  }
  return namingInfo(*app.ipa(), [&] { return rowsOf(*app.ipa()); });
}

/// The values of the slices, each once.
template <class ValueOf>
std::string listed(const std::vector<SliceRow>& slices, const ValueOf& valueOf) {
  std::vector<std::string> values;
  for (const SliceRow& slice : slices) {
    const std::string value = valueOf(slice);
    if (value.empty() || std::find(values.begin(), values.end(), value) != values.end()) continue;
    values.push_back(value);
  }
  std::string text;
  for (const std::string& value : values) text += (text.empty() ? "" : ", ") + value;
  return text;
}

/// The encrypted slices: "yes" for all, "no" for none; empty if none is known to be, but some may.
std::string encryption(const std::vector<SliceRow>& slices) {
  const auto isEncrypted = [](const SliceRow& slice) { return slice.isEncrypted == true; };
  const auto isPlain = [](const SliceRow& slice) { return slice.isEncrypted == false; };
  if (std::none_of(slices.begin(), slices.end(), isEncrypted)) {
    return std::all_of(slices.begin(), slices.end(), isPlain) ? "no" : "";
  }
  if (std::all_of(slices.begin(), slices.end(), isEncrypted)) return "yes";
  return listed(
      slices, [&](const SliceRow& slice) { return isEncrypted(slice) ? slice.architecture : ""; });
}

std::string table(const std::vector<Row>& rows) {
  TextTable table({"KIND", "ARCHITECTURES", "PLATFORM", "MINIMUM OS", "ENCRYPTED", "PATH", "NOTE"},
                  TextTable::LastColumn::whole);
  for (const Row& row : rows) {
    const auto column = [&](const auto& valueOf) { return listed(row.slices, valueOf); };
    table.addRow({row.kind, column([](const SliceRow& slice) { return slice.architecture; }),
                  column([](const SliceRow& slice) { return slice.platform.value_or(""); }),
                  column([](const SliceRow& slice) { return slice.minimumOS.value_or(""); }),
                  encryption(row.slices), row.relativePath,
                  column([](const SliceRow& slice) { return slice.error.value_or(""); })});
  }
  return table.text();
}

}  // namespace

void addExecutablesCommand(Command app) {
  Command command = app.addCommand(
      "executables", "List an app's Mach-O images, with architectures and encryption");
  const auto name = std::make_shared<std::string>();
  const auto json = std::make_shared<bool>(false);
  command.text("APP", *name, kReadAppHelp).required().notEmpty();
  command.flag("--json", *json, "Print a JSON array");
  command.run([name, json] {
    const std::vector<Row> rows = rowsOfApp(*name);
    printData(*json ? shownJSON(rows) + "\n" : table(rows));
    return 0;
  });
}

}  // namespace tavlen::cli
