#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "cli/arguments/AppArgument.h"
#include "cli/commands/Commands.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/ShownText.h"
#include "cli/terminal/TextTable.h"
#include "cli/work/AppForReading.h"
#include "tavlen/bundles/Executable.h"
#include "tavlen/foundation/text/Unicode.h"

namespace tavlen::cli {

namespace {

/// A row of the output, which describes one executable.
struct Row {
  std::string kind;
  std::string name;
  std::string relativePath;
  std::string path;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("kind", &Row::kind), requiredField("name", &Row::name),
                      requiredField("relativePath", &Row::relativePath),
                      requiredField("path", &Row::path)};
  }
};

Row rowOf(std::string_view kind, const Executable& executable) {
  return {std::string(kind), wellFormedUTF8(executable.name()),
          wellFormedUTF8(executable.relativePath()), wellFormedUTF8(shownPath(executable.path()))};
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
  for (const std::string& fault : app.faults()) printWarning(name + ": " + fault);
  return namingInfo(*app.ipa(), [&] { return rowsOf(*app.ipa()); });
}

std::string table(const std::vector<Row>& rows) {
  TextTable table({"KIND", "PATH"});
  for (const Row& row : rows) table.addRow({row.kind, row.relativePath});
  return table.text();
}

}  // namespace

void addExecutablesCommand(Command app) {
  Command command = app.addCommand("executables", "List the Mach-O images of an app");
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
