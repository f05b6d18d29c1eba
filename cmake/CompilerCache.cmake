# Uses ccache if it is installed and can write to its folder, so that nothing is compiled twice, even by a clone in another
# folder. To disable it, set TAVLEN_CCACHE=OFF or set a compiler launcher.
find_program(TAVLEN_CCACHE ccache)
set(cache_fails YES)
if(TAVLEN_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  # Whether ccache can write to its folder shows only when compiling.
  file(WRITE "${PROJECT_BINARY_DIR}/CMakeFiles/cached.cpp" "")
  execute_process(COMMAND "${TAVLEN_CCACHE}" "${CMAKE_CXX_COMPILER}" -c cached.cpp -o cached.o
    WORKING_DIRECTORY "${PROJECT_BINARY_DIR}/CMakeFiles" RESULT_VARIABLE cache_fails OUTPUT_QUIET ERROR_QUIET)
endif()
# Read by scripts/check-lint.
set(TAVLEN_USED_CCACHE "" CACHE INTERNAL "The cache that compilers run under")
if(cache_fails EQUAL 0)
  set(TAVLEN_USED_CCACHE "${TAVLEN_CCACHE}" CACHE INTERNAL "The cache that compilers run under")
  # Compare paths in the clone, and the working folder, relative to the clone. So debug information from the cache may name
  # another clone's folder. Compare precompiled headers by their contents.
  set(launcher env "CCACHE_BASEDIR=${PROJECT_SOURCE_DIR}" CCACHE_NOHASHDIR=1
    CCACHE_SLOPPINESS=pch_defines,time_macros "${TAVLEN_CCACHE}")
  set(CMAKE_CXX_COMPILER_LAUNCHER ${launcher})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    # A precompiled header from the cache may be older than its sources.
    list(APPEND CMAKE_CXX_COMPILE_OPTIONS_CREATE_PCH -Xclang -fno-pch-timestamp)
  endif()
  set(CMAKE_OBJC_COMPILER_LAUNCHER ${launcher})
endif()
