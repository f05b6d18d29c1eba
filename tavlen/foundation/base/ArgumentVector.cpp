#include "tavlen/foundation/base/ArgumentVector.h"

#if defined(__APPLE__)
#include <crt_externs.h>
#else
#include <unistd.h>
#endif

namespace tavlen {

ArgumentVector::ArgumentVector(const std::vector<std::string>& arguments) : texts_(arguments) {
  pointers_.reserve(texts_.size() + 1);
  for (std::string& text : texts_) pointers_.push_back(text.data());
  pointers_.push_back(nullptr);
}

namespace {

char**& variablesOfProcess() {
#if defined(__APPLE__)
  return *_NSGetEnviron();  // only the main program has `environ` itself
#else
  return environ;
#endif
}

}  // namespace

char** environmentOfProcess() { return variablesOfProcess(); }

void setEnvironmentOfProcess(char** variables) { variablesOfProcess() = variables; }

}  // namespace tavlen
