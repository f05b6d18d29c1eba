# Linked privately by all targets of this project, so that the flags never reach a user of the library.
add_library(tavlen_options INTERFACE)
target_compile_options(tavlen_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
  $<$<COMPILE_LANG_AND_ID:CXX,Clang>:-Wreserved-identifier>
  # GCC 12 at -O3 falsely reports the inlined std::string operator+ as an overlapping copy.
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
if(TAVLEN_WARNINGS_AS_ERRORS)
  target_compile_options(tavlen_options INTERFACE -Werror)
endif()

if(TAVLEN_SANITIZE)
  # For everything except the tests' Objective-C, which another compiler builds: the sanitizer misses errors in objects
  # without instrumentation.
  add_compile_options("$<$<COMPILE_LANGUAGE:CXX>:-fsanitize=${TAVLEN_SANITIZE};-fno-sanitize-recover=all;-fno-omit-frame-pointer>")
  add_link_options($<$<LINK_LANGUAGE:CXX>:-fsanitize=${TAVLEN_SANITIZE}>)
  # The JavaScript engine is built without RTTI, but may use inline functions of the standard library from our programs;
  # the check of the dynamic type would fail for its objects.
  add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-fno-sanitize=vptr>)
  # Blocks are called through their public interface, with a first argument whose type differs from the function's.
  add_compile_options($<$<COMPILE_LANG_AND_ID:CXX,Clang>:-fno-sanitize=function>)
endif()
# Coverage instrumentation for the fuzzing engine, only for the core and the fuzz targets. Optimised, it runs several times
# as many inputs, and the tests under the address sanitizer save as much time as compiling costs.
add_library(tavlen_fuzzing INTERFACE)
if(TAVLEN_FUZZING_ENGINE)
  target_compile_options(tavlen_fuzzing INTERFACE -fsanitize=fuzzer-no-link -O1)
endif()
