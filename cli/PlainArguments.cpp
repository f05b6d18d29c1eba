#include "cli/PlainArguments.h"

namespace tavlen::cli {

CLI::Option* addPlainArguments(CLI::App& command, const std::string& name,
                               std::vector<std::string>& values, const std::string& description) {
  constexpr int kEndless = CLI::detail::expected_max_vector_size;
  // Arguments in brackets are taken apart where an option may have more than it expects. So it
  // expects more than there can be; taking all that there are, it does not miss the others.
  return command.add_option(name, values, description)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->expected(kEndless - 1, kEndless)
      ->allow_extra_args(false)
      ->required()
      ->option_text("TEXT ... REQUIRED");
}

}  // namespace tavlen::cli
