#include "cli/terminal/Question.h"

#include <unistd.h>

#include <iostream>

#include "cli/terminal/Console.h"

namespace tavlen::cli {

bool isConfirmed(const std::string& question) {
  if (::isatty(STDIN_FILENO) == 0 || ::isatty(STDERR_FILENO) == 0) return true;
  printMessage(question + " [y/N] ");
  std::string answer;
  std::getline(std::cin, answer);
  return answer == "y" || answer == "Y" || answer == "yes";
}

}  // namespace tavlen::cli
