# Debian's ccache, where it is installed and can write to its folder: what was compiled once is not compiled again, not
# even by a clone in another folder. TAVLEN_CCACHE=OFF does without it, and so does a launcher of the user's own.
find_program(TAVLEN_CCACHE ccache)
set(cache_fails YES)
if(TAVLEN_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  # Only a compilation tells.
  file(WRITE "${PROJECT_BINARY_DIR}/CMakeFiles/cached.cpp" "")
  execute_process(COMMAND "${TAVLEN_CCACHE}" "${CMAKE_CXX_COMPILER}" -c cached.cpp -o cached.o
    WORKING_DIRECTORY "${PROJECT_BINARY_DIR}/CMakeFiles" RESULT_VARIABLE cache_fails OUTPUT_QUIET ERROR_QUIET)
endif()
# scripts/check-lint reads it.
set(TAVLEN_USED_CCACHE "" CACHE INTERNAL "The cache that compilers run under")
if(cache_fails EQUAL 0)
  set(TAVLEN_USED_CCACHE "${TAVLEN_CCACHE}" CACHE INTERNAL "The cache that compilers run under")
  # Paths below the clone count by their place in it, and so does the folder that a compiler works in: debug information
  # from the cache may name the folder of another clone. A precompiled header counts by its contents.
  set(launcher env "CCACHE_BASEDIR=${PROJECT_SOURCE_DIR}" CCACHE_NOHASHDIR=1
    CCACHE_SLOPPINESS=pch_defines,time_macros "${TAVLEN_CCACHE}")
  set(CMAKE_CXX_COMPILER_LAUNCHER ${launcher})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    # A precompiled header from the cache may be older than the files that it was made from.
    list(APPEND CMAKE_CXX_COMPILE_OPTIONS_CREATE_PCH -Xclang -fno-pch-timestamp)
  endif()
  set(CMAKE_OBJC_COMPILER_LAUNCHER ${launcher})
endif()
