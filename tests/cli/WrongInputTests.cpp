#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <regex>
#include <sstream>

#include "tavlen/foundation/files/FileSystem.h"
#include "tests/cli/CommandTest.h"
#include "tests/support/TestPaths.h"

// What the command answers to wrong input, all of it as the user sees it. The table is a session in
// a shell, which people read:
//
//     $ tavlen show nothing
//     tavlen: error: nothing: ...
//     [1]
//
// Each line that begins with "$ " is run in the same folder; the lines after it are its output, on
// both streams, and its exit status unless that is 0. Other lines are remarks.
namespace tavlen {
namespace {

struct Step {
  std::string remark;  ///< the lines before it
  std::string command;
  std::string output;

  std::string text() const { return remark + "$ " + command + "\n" + output; }
};

/// A remark begins after an empty line.
std::vector<Step> stepsOf(const std::string& session) {
  std::vector<Step> steps;
  std::string remark;
  bool isOutput = false;
  std::istringstream lines(session);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("$ ")) {
      steps.push_back({std::exchange(remark, ""), line.substr(2), ""});
      isOutput = true;
      continue;
    }
    if (line.empty()) isOutput = false;
    (isOutput ? steps.back().output : remark) += line + "\n";
  }
  return steps;
}

class WrongInputTest : public CommandTest {
 protected:
  WrongInputTest() {
    setEnvironment({"TAVLEN_ROOT=" + (folder() / "device").string(), "PATH=/usr/bin:/bin",
                    "TMPDIR=" + folder().string(), "EXAMPLES=" + paths().examples});
  }

  /// Runs the step's command and returns what it printed in the form of the table, without what
  /// differs between two runs: the folder, and new identifiers.
  std::string outputOf(const std::string& command) const {
    const Result result = shell("tavlen() { \"$tavlen\" \"$@\"; }\n{ " + command + "\n} 2>&1");
    static const std::regex identifier("[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}");
    static const std::regex temporary("tavlen-[A-Za-z0-9]{6}/");
    std::string output = std::regex_replace(result.out + result.err, identifier, "UUID");
    output = std::regex_replace(output, temporary, "tavlen-XXXXXX/");
    const std::string own = folder().string();
    for (std::size_t at = 0; (at = output.find(own, at)) != std::string::npos;)
      output.replace(at, own.size(), "$PWD");
    if (!output.empty() && !output.ends_with('\n')) output += "\n";
    // An empty line would end the output in the table.
    output = std::regex_replace(output, std::regex("\n\n"), "\n(an empty line)\n");
    return result.status == 0 ? output : output + "[" + std::to_string(result.status) + "]\n";
  }
};

TEST_F(WrongInputTest, IsAnsweredInPlainWords) {
  const std::string table = paths().testData + "/wrong-inputs.txt";
  std::vector<Step> steps = stepsOf(readFile(table));
  int refused = 0;
  std::string session;
  for (Step& step : steps) {
    const std::string output = outputOf(step.command);
    EXPECT_EQ(output, step.output) << step.command;
    step.output = output;
    session += step.text();
    if (output.ends_with("]\n")) ++refused;
  }
  EXPECT_GE(refused, 150);
  // To be read, and then to replace the table, after messages have changed on purpose.
  if (const char* file = std::getenv("TAVLEN_WRITE_SESSION")) std::ofstream(file) << session;
}

}  // namespace
}  // namespace tavlen
