#include "cli/help/ManualPage.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "cli/help/Examples.h"
#include "cli/help/HelpPage.h"

namespace tavlen::cli {

namespace {

/// `text` as it stands, in the language of the page.
std::string escaped(std::string_view text) {
  std::string shown;
  for (const char c : text) {
    if (c == '\\') {
      shown += "\\e";
    } else if (c == '-') {
      shown += "\\-";
    } else if (c == '\'') {
      shown += "\\(aq";
    } else {
      shown += c;
    }
  }
  return shown.starts_with('.') ? "\\&" + shown : shown;
}

/// A request with one argument.
std::string request(std::string_view name, std::string_view text) {
  std::string quoted;
  for (const char c : escaped(text)) quoted += c == '"' ? "\\(dq" : std::string(1, c);
  return std::string(".").append(name).append(" \"").append(quoted).append("\"\n");
}

std::string paragraph(std::string_view text) { return ".PP\n" + escaped(text) + "\n"; }

std::string entries(const std::vector<OptionRecord>& options) {
  std::string text;
  for (const OptionRecord& option : options)
    text += ".TP\n" + request("B", labelOf(option)) + escaped(describedHelp(option)) + ".\n";
  return text;
}

std::string examplesText(const std::vector<Example>& examples) {
  std::string text = ".PP\n.nf\n";
  for (const Example& example : examples) text += escaped(exampleText(example)) + "\n";
  return examples.empty() ? "" : text + ".fi\n";
}

/// The parts about the command and its subcommands, without headings that have no text.
std::string commandText(CommandPath path) {
  const CommandRecord& command = *path.back();
  std::string text;
  if (!command.needsCommand) {
    text = request("SS", usageOf(path)) + escaped(command.description) + ".\n";
    for (const OptionRule& rule : command.rules) text += paragraph(ruleText(rule) + ".");
    text += entries(command.arguments) + entries(command.options);
    if (command.commands.empty()) text += examplesText(examplesOf(wordsOf(path)));
  }
  for (const CommandRecord& each : command.commands) {
    path.push_back(&each);
    text += commandText(path);
    path.pop_back();
  }
  return text;
}

std::string commandsText(const CommandRecord& root) {
  std::string text;
  for (const std::string& heading : root.headings()) {
    std::string title = heading;
    std::transform(title.begin(), title.end(), title.begin(), [](char c) {
      return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    });
    text += request("SH", title);
    for (const CommandRecord& each : root.commands) {
      if (each.heading == heading) text += commandText({&root, &each});
    }
  }
  return text;
}

constexpr const char* kEnd = R"(.SH EXIT STATUS
0 for success, 1 for a failure, 2 for wrong usage.
.SH ENVIRONMENT
.TP
.B TAVLEN_ROOT
The folder that represents the root of the device, unless \-\-root is given.
.TP
.B VISUAL\fR, \fPEDITOR
The editor.
.TP
.B NO_COLOR
If it is set, nothing is coloured, unless \-\-color is given.
.TP
.B COLUMNS
The width of help, in columns.
)";

}  // namespace

std::string manualPage(const CommandRecord& root) {
  return std::string(".TH TAVLEN 1\n.SH NAME\n") + root.name + " \\- " + escaped(root.description) +
         "\n.SH SYNOPSIS\n" + request("B", usageOf({&root})) + ".SH OPTIONS\n" +
         entries(root.options) + commandsText(root) + kEnd;
}

}  // namespace tavlen::cli
