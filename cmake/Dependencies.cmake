# Where each library that Tavlen uses comes from, per platform. The other files name only the targets of this one. It is
# installed, too: a program that links the static library needs the libraries that are linked.
#
#                              Debian                       Apple's systems
#   dependency::CLI11          libcli11-dev                 headers in TAVLEN_APPLE_LIBRARIES
#   dependency::CoreFoundation none                         SDK
#   dependency::Deflate        libdeflate-dev               static in TAVLEN_APPLE_LIBRARIES
#   dependency::DragonBox      libdragonbox-dev             headers in TAVLEN_APPLE_LIBRARIES
#   dependency::FastFloat      libfast-float-dev            headers in TAVLEN_APPLE_LIBRARIES
#   dependency::FFI            libffi-dev                   headers in TAVLEN_APPLE_LIBRARIES
#   dependency::ICU            libicu-dev                   SDK (libicucore); headers in TAVLEN_APPLE_LIBRARIES
#   dependency::JavaScriptCore libjavascriptcoregtk-4.1-dev SDK
#   dependency::JPEG           libjpeg62-turbo-dev          static in TAVLEN_APPLE_LIBRARIES
#   dependency::LibXML2        libxml2-dev                  SDK
#   dependency::ObjectiveC     libobjc-12-dev,              SDK
#                              libblocksruntime-dev
#   dependency::PNG            libpng-dev, zlib1g-dev       static in TAVLEN_APPLE_LIBRARIES; zlib: SDK
#   dependency::TOML           libtomlplusplus-dev          headers in TAVLEN_APPLE_LIBRARIES
#   dependency::UUID           uuid-dev                     SDK
#   dependency::ZIP            libzip-dev                   static in TAVLEN_APPLE_LIBRARIES
#
# Of TOML only the headers are used: the packaged library has a lower limit of nesting, and lacks the sanitizers. Of
# JavaScriptCore and libzip only the headers are used on Debian: these libraries are loaded when they are first needed. The
# loader links the former, dependency::JavaScriptLibrary.

set(TAVLEN_LINKED_LIBRARIES dependency::Deflate dependency::ICU dependency::JPEG dependency::LibXML2 dependency::ObjectiveC dependency::PNG
  dependency::UUID)
set(TAVLEN_HEADER_LIBRARIES dependency::DragonBox dependency::FastFloat dependency::TOML)
if(APPLE)
  list(APPEND TAVLEN_LINKED_LIBRARIES dependency::CoreFoundation dependency::JavaScriptCore dependency::ZIP)
else()
  list(APPEND TAVLEN_HEADER_LIBRARIES dependency::JavaScriptCore dependency::ZIP)
endif()

if(APPLE)
  # tavlen_dependency(NAME HEADER [LIBRARY...]): a library is `static:NAME` or what the linker is given.
  function(tavlen_dependency name header)
    add_library(dependency::${name} INTERFACE IMPORTED GLOBAL)
    if(header AND NOT TAVLEN_IS_INSTALLED)
      find_path(${name}_INCLUDE_DIR ${header} PATH_SUFFIXES libxml2 REQUIRED)
      # The compiler searches the SDK by itself, after its own headers.
      if(NOT ${name}_INCLUDE_DIR STREQUAL "${CMAKE_OSX_SYSROOT}/usr/include")
        target_include_directories(dependency::${name} SYSTEM INTERFACE "${${name}_INCLUDE_DIR}")
      endif()
    endif()
    foreach(library IN LISTS ARGN)
      if(library MATCHES "^static:(.*)")
        find_library(${CMAKE_MATCH_1}_LIBRARY "lib${CMAKE_MATCH_1}.a" REQUIRED)
        set(library "${${CMAKE_MATCH_1}_LIBRARY}")
      endif()
      target_link_libraries(dependency::${name} INTERFACE "${library}")
    endforeach()
  endfunction()

  if(TAVLEN_COMMAND)
    tavlen_dependency(CLI11 CLI/CLI.hpp)
  endif()
  if(NOT TAVLEN_IS_INSTALLED)
    tavlen_dependency(DragonBox dragonbox/dragonbox.h)
    tavlen_dependency(FastFloat fast_float/fast_float.h)
    tavlen_dependency(TOML toml++/toml.h)
  endif()
  tavlen_dependency(CoreFoundation "" "-framework CoreFoundation")
  tavlen_dependency(Deflate libdeflate.h static:deflate)
  if(TAVLEN_LOADER)
    tavlen_dependency(FFI ffi.h)
  endif()
  tavlen_dependency(ICU unicode/uchar.h -licucore)
  # The system's library has the names of its functions without the version.
  target_compile_definitions(dependency::ICU INTERFACE U_DISABLE_RENAMING=1)
  tavlen_dependency(JavaScriptCore "" "-framework JavaScriptCore")
  add_library(dependency::JavaScriptLibrary ALIAS dependency::JavaScriptCore)
  tavlen_dependency(JPEG jpeglib.h static:jpeg)
  tavlen_dependency(LibXML2 libxml/parser.h -lxml2)
  tavlen_dependency(ObjectiveC "" -lobjc)
  tavlen_dependency(PNG png.h static:png16 -lz)
  tavlen_dependency(UUID "")
  tavlen_dependency(ZIP zip.h static:zip -lz)
else()
  find_package(PkgConfig REQUIRED)
  # tavlen_dependency(NAME MODULE...): what pkg-config knows under these names.
  set(TAVLEN_PKG_CONFIG_MODULES)
  macro(tavlen_dependency name)
    pkg_check_modules(TAVLEN_${name} REQUIRED IMPORTED_TARGET GLOBAL ${ARGN})
    add_library(dependency::${name} ALIAS PkgConfig::TAVLEN_${name})
    list(APPEND TAVLEN_PKG_CONFIG_MODULES ${ARGN})
  endmacro()
  tavlen_dependency(Deflate libdeflate)
  tavlen_dependency(ICU icu-i18n icu-uc)
  tavlen_dependency(JPEG libjpeg)
  tavlen_dependency(LibXML2 libxml-2.0)
  tavlen_dependency(PNG libpng zlib)
  tavlen_dependency(UUID uuid)

  if(NOT TAVLEN_IS_INSTALLED)
    find_package(dragonbox REQUIRED)
    add_library(dependency::DragonBox ALIAS dragonbox::dragonbox)
    find_package(FastFloat REQUIRED)
    add_library(dependency::FastFloat ALIAS FastFloat::fast_float)
    # tavlen_headers(NAME MODULE): the headers of a module alone.
    function(tavlen_headers name module)
      pkg_check_modules(TAVLEN_${name} REQUIRED ${module})
      add_library(dependency::${name} INTERFACE IMPORTED)
      target_include_directories(dependency::${name} SYSTEM INTERFACE ${TAVLEN_${name}_INCLUDE_DIRS})
    endfunction()
    tavlen_headers(JavaScriptCore javascriptcoregtk-4.1)
    tavlen_headers(TOML tomlplusplus)
    tavlen_headers(ZIP libzip)
  endif()
  if(TAVLEN_LOADER)
    pkg_check_modules(FFI REQUIRED IMPORTED_TARGET libffi)
    add_library(dependency::FFI ALIAS PkgConfig::FFI)
    pkg_check_modules(JavaScriptLibrary REQUIRED IMPORTED_TARGET javascriptcoregtk-4.1)
    add_library(dependency::JavaScriptLibrary ALIAS PkgConfig::JavaScriptLibrary)
  endif()
  if(TAVLEN_COMMAND)
    find_package(CLI11 REQUIRED)
    add_library(dependency::CLI11 ALIAS CLI11::CLI11)
  endif()

  # GCC's run time.
  add_library(dependency::ObjectiveC INTERFACE IMPORTED GLOBAL)
  target_link_libraries(dependency::ObjectiveC INTERFACE objc BlocksRuntime)
  # Programs that do not use the bridge do not load the run time.
  target_link_options(dependency::ObjectiveC INTERFACE "LINKER:--as-needed")
  # The run time's headers are in the same folder as GCC's own headers, which clang must not find before its own.
  if(NOT TAVLEN_IS_INSTALLED AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    file(GLOB gcc_includes "/usr/lib/gcc/*/*/include")
    find_path(TAVLEN_OBJC_HEADERS objc/objc.h PATHS ${gcc_includes} NO_DEFAULT_PATH REQUIRED)
    target_compile_options(dependency::ObjectiveC INTERFACE "SHELL:-idirafter ${TAVLEN_OBJC_HEADERS}")
  endif()
endif()
