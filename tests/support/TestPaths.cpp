#include "tests/support/TestPaths.h"

const tavlen::TestPaths& tavlen::paths() {
  static const TestPaths paths = {TAVLEN_TEST_PATHS};
  return paths;
}
