#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "cli/commands/Commands.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/InputLines.h"
#include "cli/work/TypeTree.h"
#include "tavlen/foundation/json/JSONEncoder.h"
#include "tavlen/foundation/text/EscapedText.h"
#include "tavlen/introspection/types/JXType.h"

namespace tavlen::cli {

namespace {

/// The output line for `encoding`: its first type.
std::string answerTo(std::string_view encoding, bool json) {
  const std::shared_ptr<JXType> type = JXTypeForEncoding(encoding);
  std::string answer;
  if (json) {
    JSONEncoder encoder(answer);
    encodeTypeTree(encoder, type.get());
  } else if (type != nullptr) {
    answer = escapedForTerminal(type->description());
  }
  return answer;
}

int answerInput(bool json) {
  // Print at once before waiting for input; otherwise collect larger pieces.
  constexpr std::size_t kEnough = 1 << 16;
  std::string answers;
  const auto print = [&answers] {
    if (!answers.empty()) printData(answers);
    answers.clear();
  };
  forEachInputLine(
      [&](std::string_view line) {
        if (!line.empty()) answers += answerTo(line, json);
        answers += '\n';
        if (answers.size() >= kEnough) print();
      },
      print);
  return 0;
}

int answerArguments(const std::vector<std::string>& encodings, bool json) {
  std::string answers = json ? "[" : "";
  for (const std::string& encoding : encodings) {
    if (json && answers.size() > 1) answers += ',';
    answers += answerTo(encoding, json);
    if (!json) answers += '\n';
  }
  printData(json ? answers + "]\n" : answers);
  return 0;
}

}  // namespace

void addTypeCommand(Command app) {
  Command command = app.addCommand("type", "Print Objective-C type encodings as C declarations");
  const auto encodings = std::make_shared<std::vector<std::string>>();
  const auto json = std::make_shared<bool>(false);
  command.texts("ENCODING", *encodings,
                "Type encodings; prints a line for the first type of each. \"-\" alone reads "
                "one per line from the standard input");
  command.flag("--json", *json, "Print a JSON array of type trees; with \"-\", one tree per line");
  command.run([encodings, json] {
    const bool readsInput = encodings->size() == 1 && encodings->front() == "-";
    return readsInput ? answerInput(*json) : answerArguments(*encodings, *json);
  });
}

}  // namespace tavlen::cli
