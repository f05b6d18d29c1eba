#include "cli/help/CompletedWord.h"

#include <algorithm>
#include <cctype>
#include <optional>

namespace tavlen::cli {

namespace {

constexpr const char* kCommand = "COMMAND";

bool isOption(const std::string& word) {
  // "-1" is an address, and "-[C s]" a method.
  return word.size() > 1 && word[0] == '-' &&
         (word[1] == '-' || std::isalpha(static_cast<unsigned char>(word[1])) != 0);
}

/// Reads a line word by word, as the parser does.
class Reader {
 public:
  Reader(const CommandRecord& root, CompletedWord& word)
      : path_{&root}, help_{&root}, word_(&word) {}

  void read(const std::string& word) {
    if (pending_) {
      word_->given[pending_->title()] = word;
      pending_.reset();
    } else if (!isEnded_ && word == "--") {
      isEnded_ = true;
    } else if (!isEnded_ && isOption(word)) {
      readOption(word);
    } else if (const CommandRecord* next = command().find(word); next != nullptr && count_ == 0) {
      path_.push_back(next);
    } else {
      readArgument(word);
    }
  }

  void complete(const std::string& word) {
    word_->prefix = word;
    if (pending_) return offer(*pending_);
    if (!isEnded_ && (word == "-" || isOption(word))) completeOption(word);
    if (count_ == 0) offerCommands(command());
    if (isOption(word)) return;
    if (const OptionRecord* argument = nextArgument()) {
      if (argument->placeholder == kCommand) offerCommands(*help_.back());
      offer(*argument);
    }
  }

 private:
  const CommandRecord& command() const { return *path_.back(); }

  std::optional<OptionRecord> option(const std::string& name) const {
    if (const OptionRecord* own = command().option(name)) return *own;
    for (const OptionRecord& inherited : inheritedOptions(path_)) {
      if (inherited.hasName(name)) return inherited;
    }
    return std::nullopt;
  }

  void readOption(const std::string& word) {
    const std::size_t end = word.find('=');
    std::optional<OptionRecord> found = option(word.substr(0, end));
    if (!found || found->placeholder.empty()) return;
    if (end != std::string::npos) {
      word_->given[found->title()] = word.substr(end + 1);
    } else {
      pending_ = std::move(found);
    }
  }

  const OptionRecord* nextArgument() const {
    const std::vector<OptionRecord>& arguments = command().arguments;
    if (count_ < arguments.size()) return &arguments[count_];
    return !arguments.empty() && arguments.back().isRepeated ? &arguments.back() : nullptr;
  }

  void readArgument(const std::string& word) {
    const OptionRecord* argument = nextArgument();
    ++count_;
    if (argument == nullptr) return;
    word_->given[argument->placeholder] = word;
    if (const CommandRecord* next = help_.back()->find(word)) help_.push_back(next);
  }

  void completeOption(const std::string& word) {
    const std::size_t end = word.find('=');
    if (end != std::string::npos) {
      word_->start = word.substr(0, end + 1);
      word_->prefix = word.substr(end + 1);
      if (const auto found = option(word.substr(0, end))) offer(*found);
      return;
    }
    for (const auto& options : {command().options, inheritedOptions(path_)}) {
      for (const OptionRecord& option : options) word_->values.push_back(option.names.back());
    }
  }

  void offerCommands(const CommandRecord& command) {
    for (const CommandRecord& each : command.commands) {
      if (!each.heading.empty()) word_->values.push_back(each.name);
    }
  }

  void offer(const OptionRecord& option) {
    std::vector<std::string>& values = word_->values;
    values.insert(values.end(), option.values.begin(), option.values.end());
    std::string_view rest = option.placeholder;
    while (!rest.empty()) {
      const std::string kind(rest.substr(0, rest.find('|')));
      rest.remove_prefix(std::min(kind.size() + 1, rest.size()));
      const bool isValue = std::islower(static_cast<unsigned char>(kind.front())) != 0;
      (isValue ? values : word_->kinds).push_back(kind);
    }
  }

  CommandPath path_;
  CommandPath help_;                     ///< the command that `help` is asked about
  std::optional<OptionRecord> pending_;  ///< the option whose value comes next
  std::size_t count_ = 0;                ///< of positional arguments
  bool isEnded_ = false;                 ///< whether "--" has ended the options
  CompletedWord* word_;
};

}  // namespace

CompletedWord CompletedWord::of(const CommandRecord& root, std::span<const std::string> words) {
  CompletedWord word;
  Reader reader(root, word);
  for (const std::string& each : words.subspan(1, words.size() - 2)) reader.read(each);
  reader.complete(words.back());
  return word;
}

bool CompletedWord::hasKind(std::string_view kind) const {
  return std::find(kinds.begin(), kinds.end(), kind) != kinds.end();
}

}  // namespace tavlen::cli
