#include "tavlen/foundation/zip/detail/ZIPLibrary.h"

namespace tavlen {

namespace {

ZIPLibrary loadLibrary() {
  const SharedLibrary library("libzip.so.4");
  ZIPLibrary functions = {};
  TAVLEN_ZIP_FUNCTIONS(TAVLEN_FIND_FUNCTION)
  return functions;
}

}  // namespace

const ZIPLibrary& libzip() {
  static const ZIPLibrary kLibrary = loadLibrary();
  return kLibrary;
}

}  // namespace tavlen
