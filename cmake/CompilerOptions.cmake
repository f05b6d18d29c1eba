# Linked privately by every target of ours, so that the flags never reach a user of the library.
add_library(tavlen_options INTERFACE)
target_compile_options(tavlen_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # At -O3 it takes "text" + std::string for a copy that overlaps.
  target_compile_options(tavlen_options INTERFACE -Wno-restrict)
endif()
if(TAVLEN_WARNINGS_AS_ERRORS)
  target_compile_options(tavlen_options INTERFACE -Werror)
endif()

if(TAVLEN_SANITIZE)
  # For the whole build: an object without the instrumentation hides what happens in it.
  add_compile_options(-fsanitize=${TAVLEN_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${TAVLEN_SANITIZE})
  # The JavaScript engine, built without run-time types, takes inline functions of the standard library from our
  # programs; the check of the dynamic type would stop at its objects.
  add_compile_options(-fno-sanitize=vptr)
endif()
if(TAVLEN_FUZZING_ENGINE)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
