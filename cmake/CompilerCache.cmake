# Debian's ccache, where it is installed: what was compiled once is not compiled again, not even by a clone in another
# folder. TAVLEN_CCACHE=OFF does without it.
find_program(TAVLEN_CCACHE ccache)
if(TAVLEN_CCACHE)
  # Paths below the clone count by their place in it, and so does the folder that a compiler works in: debug information
  # from the cache may name the folder of another clone. A precompiled header counts by its contents.
  set(launcher env "CCACHE_BASEDIR=${PROJECT_SOURCE_DIR}" CCACHE_NOHASHDIR=1
    CCACHE_SLOPPINESS=pch_defines,time_macros "${TAVLEN_CCACHE}")
  set(CMAKE_CXX_COMPILER_LAUNCHER ${launcher})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    # Of a precompiled header from the cache, the sources may be younger.
    list(APPEND CMAKE_CXX_COMPILE_OPTIONS_CREATE_PCH -Xclang -fno-pch-timestamp)
  endif()
  set(CMAKE_OBJC_COMPILER_LAUNCHER ${launcher})
endif()
