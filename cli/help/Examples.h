#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tavlen::cli {

/// A line for a shell that shows how a command is used.
struct Example {
  std::string_view line;
  /// What keeps the line from ending well in the example device tree; empty for most lines.
  std::string_view condition;
};

/// The examples of all commands, as a story that can be run from its beginning to its end in the
/// tree of examples/make-device.
std::span<const Example> examples();

/// The examples whose line contains `words`, such as "tavlen hook add", as whole words.
std::vector<Example> examplesOf(const std::string& words);

/// The line, and the condition as a comment.
std::string exampleText(const Example& example);

}  // namespace tavlen::cli
