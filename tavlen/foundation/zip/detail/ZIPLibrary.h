#pragma once

#include <zip.h>

#include "tavlen/foundation/base/SharedLibrary.h"

namespace tavlen {

/// The functions of libzip that are called here.
// clang-format off
#define TAVLEN_ZIP_FUNCTIONS(of) \
  of(zip_close) \
  of(zip_dir_add) \
  of(zip_discard) \
  of(zip_error_code_zip) \
  of(zip_error_fini) \
  of(zip_error_init) \
  of(zip_fclose) \
  of(zip_file_add) \
  of(zip_file_get_error) \
  of(zip_file_set_dostime) \
  of(zip_file_set_external_attributes) \
  of(zip_fopen_index) \
  of(zip_fread) \
  of(zip_get_error) \
  of(zip_get_num_entries) \
  of(zip_open_from_source) \
  of(zip_set_file_compression) \
  of(zip_source_free) \
  of(zip_source_function_create) \
  of(zip_source_seek_compute_offset) \
  of(zip_stat_index) \
  of(zip_stat_init) \
  of(zip_strerror)
// clang-format on

struct ZIPLibrary {
  TAVLEN_ZIP_FUNCTIONS(TAVLEN_LIBRARY_FUNCTION)
};

/// libzip, which is loaded by the first call: with the library for encryption that it needs, it
/// takes a fifth of the start of the command. Throws std::runtime_error if it cannot be loaded.
/// Threads: any.
const ZIPLibrary& libzip();

}  // namespace tavlen
