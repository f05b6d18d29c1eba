#include "cli/help/Examples.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace tavlen::cli {

namespace {

constexpr std::string_view kOnDevice = "on a device";
constexpr std::string_view kEndless = "until it is interrupted";

/// A command that is added has an example here, at a place where its files and items exist.
constexpr auto kExamples = std::to_array<Example>({
    {"tavlen help hook add", ""},
    {"tavlen apps", ""},
    {"tavlen info com.example.notes", ""},
    {"tavlen executables com.example.notes", ""},
    {"tavlen icon com.example.notes -o Notes.png", ""},
    {"mkdir logs && tavlen crash-logs com.example.notes logs", ""},
    {"tavlen new Morning --app com.example.notes --color lightYellow --glyph sun", ""},
    {"tavlen classes com.example.notes --match 'Note*'", ""},
    {"tavlen methods NoteList --in com.example.notes", ""},
    {"tavlen methods --in com.example.notes --match '*Note*' --json", ""},
    {"tavlen type '{CGPoint=dd}' '@\"NSString<NSCopying>\"'", ""},
    {"tavlen type 'v24@0:8@16' --method '-[NoteSearch setQuery:]'", ""},
    {"tavlen hook add Morning '-[NoteList title]' --return 'string:Good morning'", ""},
    {"tavlen hook add Morning '-[NoteStore saveNote:error:]' --in com.example.notes", ""},
    {"tavlen hook set Morning '-[NoteStore saveNote:error:]' --name Saving", ""},
    {"tavlen hook move Morning Saving 0", ""},
    {"tavlen hook list Morning", ""},
    {"tavlen param set Morning '-[NoteList title]' -1 'string:Good morning'", ""},
    {R"(tavlen param set Morning Saving 0 'json:{"type":"Array","items":[]}')", ""},
    {"tavlen param insert Morning Saving 0.end string:first", ""},
    {"tavlen param insert Morning Saving 0.end string:second", ""},
    {"tavlen param move Morning Saving 0.1 0", ""},
    {"tavlen param get Morning Saving 0 --json", ""},
    {"tavlen param remove Morning Saving 0", ""},
    {"tavlen hook remove Morning Saving", ""},
    {"tavlen param set Morning '-[NoteList title]' -1 image:Notes.png", ""},
    {"tavlen resource list Morning", ""},
    {"tavlen param set Morning '-[NoteList title]' -1 'string:Good morning'", ""},
    {"tavlen resource prune Morning --dry-run", ""},
    {"tavlen resource remove Morning Notes.png", ""},
    {"tavlen override add Morning DisplayName 'Good Notes'", ""},
    {"tavlen override set Morning DisplayName 'Better Notes'", ""},
    {"tavlen override add Morning Version 2.0", ""},
    {"tavlen override move Morning Version 0", ""},
    {"tavlen override list Morning", ""},
    {"tavlen override remove Morning DisplayName", ""},
    {"echo '[[UIApplication sharedApplication] beep];' | tavlen script set Morning -", ""},
    {"tavlen script show Morning", ""},
    {"EDITOR=cat tavlen script edit Morning", ""},
    {"tavlen script clear Morning", ""},
    {"tavlen icon set Morning Notes.png", ""},
    {"tavlen icon Morning -o Morning.png", ""},
    {"tavlen icon clear Morning", ""},
    {"tavlen set Morning --color lightPurple --glyph moon", ""},
    {"tavlen show Morning", ""},
    {"tavlen check Morning", ""},
    {"tavlen check Morning --strict --json", ""},
    {"tavlen source Morning", ""},
    {"tavlen build Morning -o code", ""},
    {"tavlen locate Morning 3:10", ""},
    {"tavlen try Morning --trace -- ./Notes", "with a program of this machine"},
    {"tavlen dump Morning -o morning.tweak", ""},
    {"tavlen apply morning.tweak --to Morning --dry-run", ""},
    {"tavlen diff Morning ./morning.tweak", ""},
    {"EDITOR=cat tavlen edit Morning", ""},
    {"tavlen install Morning", ""},
    {"tavlen list", ""},
    {"tavlen watch", kEndless},
    {"tavlen uninstall Morning", ""},
    {"tavlen collection new Daily --app com.example.notes", ""},
    {"tavlen collection add Daily Morning", ""},
    {"tavlen collection move Daily Morning end", ""},
    {"tavlen collection list Daily", ""},
    {"tavlen export Daily -o Daily.tvxc", ""},
    {"tavlen collection remove Daily Morning", ""},
    {"tavlen delete Daily", ""},
    {"tavlen import Daily.tvxc", ""},
    {"tavlen kill com.example.notes", kOnDevice},
    {"tavlen respring", kOnDevice},
    {"tavlen completion bash > tavlen.bash", ""},
});

bool isPartOfWord(std::string_view text, std::size_t place) {
  return place < text.size() && text[place] != ' ';
}

}  // namespace

std::span<const Example> examples() { return kExamples; }

std::vector<Example> examplesOf(const std::string& words) {
  std::vector<Example> found;
  std::copy_if(
      kExamples.begin(), kExamples.end(), std::back_inserter(found), [&](const Example& example) {
        const std::size_t start = example.line.find(words);
        return start != std::string_view::npos && !isPartOfWord(example.line, start + words.size());
      });
  return found;
}

std::string exampleText(const Example& example) {
  std::string text(example.line);
  if (!example.condition.empty()) text.append("  # ").append(example.condition);
  return text;
}

}  // namespace tavlen::cli
