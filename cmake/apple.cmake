# Builds for Apple's systems, on a Mac or with another clang: cmake --toolchain cmake/apple.cmake -DTAVLEN_APPLE_SDK=...
# docs/porting.md describes the steps.
set(TAVLEN_APPLE_SDK "" CACHE PATH "The SDK: the folder *.sdk of an installed Xcode, or a copy")
set(TAVLEN_APPLE_LIBRARIES "" CACHE PATH "The folder with include/ and lib/ of libraries that the system lacks")
set(TAVLEN_APPLE_SYSTEM iOS CACHE STRING "iOS, or Darwin for macOS")
# A check of a compiler runs this file again, with these variables alone.
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TAVLEN_APPLE_SDK TAVLEN_APPLE_LIBRARIES TAVLEN_APPLE_SYSTEM)
if(NOT EXISTS "${TAVLEN_APPLE_SDK}/usr/include")
  message(FATAL_ERROR "TAVLEN_APPLE_SDK must name an SDK; \"${TAVLEN_APPLE_SDK}\" has no usr/include")
endif()

set(CMAKE_SYSTEM_NAME ${TAVLEN_APPLE_SYSTEM})
set(CMAKE_SYSTEM_PROCESSOR arm64)
set(CMAKE_OSX_ARCHITECTURES arm64 CACHE STRING "")
set(CMAKE_OSX_SYSROOT "${TAVLEN_APPLE_SDK}" CACHE PATH "")
if(TAVLEN_APPLE_SYSTEM STREQUAL "iOS")
  set(CMAKE_OSX_DEPLOYMENT_TARGET 15.0 CACHE STRING "")
  set(CMAKE_CXX_COMPILER_TARGET arm64-apple-ios${CMAKE_OSX_DEPLOYMENT_TARGET})
else()
  set(CMAKE_OSX_DEPLOYMENT_TARGET 12.0 CACHE STRING "")
  set(CMAKE_CXX_COMPILER_TARGET arm64-apple-macos${CMAKE_OSX_DEPLOYMENT_TARGET})
endif()
set(CMAKE_C_COMPILER_TARGET ${CMAKE_CXX_COMPILER_TARGET})
set(CMAKE_OBJC_COMPILER_TARGET ${CMAKE_CXX_COMPILER_TARGET})
# The programs are command lines, not bundles of apps.
set(CMAKE_MACOSX_BUNDLE OFF)

# Other systems have a linker of their own, which knows nothing of Apple's.
if(NOT CMAKE_HOST_APPLE)
  set(CMAKE_EXE_LINKER_FLAGS_INIT -fuse-ld=lld)
  # CMake asks for it where there is Objective-C, although nothing here needs it.
  set(CMAKE_INSTALL_NAME_TOOL llvm-install-name-tool CACHE STRING "")
endif()

# Nothing of the machine that builds, other than its programs.
set(CMAKE_FIND_ROOT_PATH "${TAVLEN_APPLE_SDK}" "${TAVLEN_APPLE_LIBRARIES}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(PKG_CONFIG_EXECUTABLE "" CACHE FILEPATH "")
set(TAVLEN_TESTS OFF CACHE BOOL "")
