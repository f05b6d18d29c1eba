#include <gmock/gmock.h>

#include <sstream>

#include "tests/cli/CommandTest.h"

namespace tavlen {
namespace {
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

/// In a folder with the example device tree and the command on the path.
class HelpTest : public CommandTest {
 protected:
  HelpTest() { environment({}); }

  void environment(std::vector<std::string> more) {
    more.push_back("TAVLEN_ROOT=" + (folder() / "device").string());
    more.push_back("PATH=" + fs::path(paths().command).parent_path().string() + ":/usr/bin:/bin");
    more.push_back("TMPDIR=" + folder().string());
    setEnvironment(std::move(more));
  }

  void makeDevice() const {
    ASSERT_EQ(shell("'" + paths().examples + "/make-device' device").status, 0);
  }

  /// What may end the line of a shell.
  std::vector<std::string> completions(const std::string& line) const {
    std::vector<std::string> lines = linesOf(run("complete --line --", {line}).out);
    EXPECT_THAT(lines, Not(IsEmpty())) << line;
    if (!lines.empty()) lines.erase(lines.begin());
    return lines;
  }

  /// The words of all commands below `words`.
  void addCommands(std::vector<std::string>& found, const std::string& words) const {
    for (const std::string& name : completions("tavlen help " + words)) {
      found.push_back(words + name);
      addCommands(found, words + name + " ");
    }
  }
};

TEST_F(HelpTest, EveryPageFitsTheTerminalAndEndsInAnExample) {
  makeDevice();
  std::vector<std::string> commands;
  addCommands(commands, "");
  EXPECT_GT(commands.size(), 40U);
  for (const std::string columns : {"80", "40"}) {
    environment({"COLUMNS=" + columns});
    for (const std::string& command : commands) {
      const std::string page = run("help " + command).out;
      const std::size_t example = page.find("\nExample");
      ASSERT_NE(example, std::string::npos) << command;
      EXPECT_THAT(page.substr(example), HasSubstr("tavlen " + command)) << command;
      for (const std::string& line : linesOf(page.substr(0, example)))
        EXPECT_LE(line.size(), std::stoul(columns)) << command << ": " << line;
    }
  }
  environment({"COLUMNS=80"});
  const std::vector<std::string> page = linesOf(run("").out);
  EXPECT_LE(page.size(), 50U) << "one line a command";
  for (const std::string& line : page) EXPECT_LE(line.size(), 80U) << line;
  EXPECT_EQ(run("hook remove --help").out, run("help hook remove").out);
  EXPECT_THAT(run("hook remove --help").out,
              HasSubstr("tavlen hook remove [OPTION...] TWEAK HOOK\n"));
}

TEST_F(HelpTest, ExamplesRunAsTheyStand) {
  makeDevice();
  for (const std::string& line : linesOf(run("help --examples").out)) {
    const std::size_t condition = line.find("  # ");
    if (line.ends_with("of this machine")) continue;  // see TryCommandTests
    const std::string command = line.substr(0, condition);
    const Result result = shell(condition != std::string::npos && line.ends_with("interrupted")
                                    ? "timeout --preserve-status -s INT 0.5 " + command
                                    : command);
    if (line.ends_with("# on a device")) {
      EXPECT_EQ(result.status, 1) << line;
      EXPECT_THAT(result.err, HasSubstr("device")) << line;
    } else {
      EXPECT_EQ(result.status, 0) << line << "\n" << result.err;
    }
  }
}

TEST_F(HelpTest, TheManualPageIsWellFormed) {
  const Result checked = shell("tavlen help --man > page && groff -man -ww -z page");
  EXPECT_EQ(checked.status, 0);
  EXPECT_EQ(checked.err, "");
  EXPECT_THAT(contents("page"), HasSubstr("\n.SS \"tavlen hook remove [OPTION...] TWEAK HOOK\"\n"));
}

TEST_F(HelpTest, OnlyTerminalsAreColoured) {
  makeDevice();
  const auto isColoured = [&](const std::string& command) {
    return shell(command).out.find('\x1B') != std::string::npos;
  };
  const auto onTerminal = [](const std::string& command) {
    return "script -qec '" + command + "' /dev/null </dev/null";
  };
  for (const std::string command : {"tavlen help", "tavlen apps", "tavlen instal 2>&1"}) {
    SCOPED_TRACE(command);
    EXPECT_FALSE(isColoured(command));
    EXPECT_TRUE(isColoured("TERM=xterm " + onTerminal(command)));
    EXPECT_FALSE(isColoured("TERM=dumb " + onTerminal(command)));
    EXPECT_FALSE(isColoured("TERM=xterm NO_COLOR=1 " + onTerminal(command)));
  }
  EXPECT_TRUE(isColoured("NO_COLOR=1 tavlen apps --color always"));
  EXPECT_FALSE(isColoured("TERM=xterm " + onTerminal("tavlen --color=never apps")));
  EXPECT_FALSE(isColoured("tavlen apps --json --color always"));
  EXPECT_FALSE(isColoured("tavlen instal --json --color always 2>&1"));
}

TEST_F(HelpTest, ALineIsCompleted) {
  makeDevice();
  run("new Morning --app com.example.notes");
  run("new 'Dark Notes' --app com.example.notes");
  run("collection new Daily --app com.example.notes");
  run("hook add Morning '-[NoteList title]' --signature @16@0:8 --name Title");
  const std::string id = linesOf(run("new Named --app com.example.notes").out).front();
  using Words = std::vector<std::string>;
  const struct {
    std::string line;
    Words candidates;
  } cases[] = {
      {"tavlen insta", {"install"}},
      {"tavlen hook re", {"remove"}},
      {"tavlen help hook re", {"remove"}},
      {"tavlen show Da", {"Daily", "Dark\\ Notes"}},
      {"tavlen show Dark\\ ", {"Dark\\ Notes"}},
      {"tavlen show \"Dark", {"Dark Notes"}},
      {"tavlen source Da", {"Dark\\ Notes"}},
      {"tavlen collection list ", {"Daily"}},
      {"tavlen show " + id.substr(0, 30), {id}},
      {"tavlen --root nowhere show Da", {}},
      {"tavlen hook remove Morning ", {"-\\[NoteList\\ title\\]", "Title"}},
      {"tavlen hook remove Morning '-[", {"-[NoteList title]"}},
      {"tavlen param get Morning -\\[No", {"-\\[NoteList\\ title\\]"}},
      {"tavlen new X --app com.example.n", {"com.example.notes"}},
      {"tavlen new X --app=com.example.n", {"com.example.notes"}},
      {"tavlen list --js", {"--json"}},
      {"tavlen list --color=n", {"never"}},
      {"tavlen new X --color dark", {"darkGreen", "darkPurple", "darkRed", "darkYellow"}},
      {"tavlen set X --glyph moo", {"moon"}},
      {"tavlen set X --glyph moon/", {"moon/regular", "moon/solid"}},
      {"tavlen override add Morning Display", {"DisplayName"}},
      {"tavlen icon set --s", {}},
      {"tavlen classes X --parser ", {"auto", "dynamic", "remote", "static"}},
      {"tavlen methods --in com.example.notes NoteS", {"NoteSearch", "NoteStore"}},
      {"tavlen methods --in com.example.absent NoteS", {}},
      {"tavlen completion ", {"bash", "zsh"}},
      {"tavlen show nothing -- --js", {}},
  };
  for (const auto& c : cases) EXPECT_EQ(completions(c.line), c.candidates) << c.line;
  for (const auto& [line, kind] : {std::pair("import ", "files\n"),
                                   {"methods --in zz", "files\n"},
                                   {"new X --app zz", "files\n"},
                                   {"diff Morning Mo", "files\nMorning\n"},
                                   {"build X -o ", "folders\n"}})
    EXPECT_EQ(run("complete --line --", {"tavlen " + std::string(line)}).out, kind);
}

TEST_F(HelpTest, TheScriptOfBashPutsCandidatesWhereTheShellLooksForThem) {
  makeDevice();
  run("new 'Dark Notes' --app com.example.notes");
  const Result result = shell(R"(tavlen completion bash > script; bash -c '
source ./script
COMP_LINE="tavlen show Da --json"; COMP_POINT=14
_tavlen tavlen; printf "<%s>" "${COMPREPLY[@]}"
COMP_LINE="tavlen nothing "; COMP_POINT=15
_tavlen tavlen; printf "<%s>" "${#COMPREPLY[@]}"
complete -p tavlen')");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.out, "<Dark\\ Notes><0>complete -F _tavlen tavlen\n");
}

}  // namespace
}  // namespace tavlen
