# Linked privately by every target of ours, so that the flags never reach a user of the library.
add_library(tavlen_options INTERFACE)
target_compile_options(tavlen_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
  $<$<CXX_COMPILER_ID:Clang>:-Wreserved-identifier>
  # GCC 12 at -O3 takes the inlined std::string operator+ for an overlapping copy.
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
if(TAVLEN_WARNINGS_AS_ERRORS)
  target_compile_options(tavlen_options INTERFACE -Werror)
endif()

if(TAVLEN_SANITIZE)
  # For everything but the tests' Objective-C, which another compiler builds: an object without the instrumentation hides
  # what happens in it.
  add_compile_options("$<$<COMPILE_LANGUAGE:CXX>:-fsanitize=${TAVLEN_SANITIZE};-fno-sanitize-recover=all;-fno-omit-frame-pointer>")
  add_link_options($<$<LINK_LANGUAGE:CXX>:-fsanitize=${TAVLEN_SANITIZE}>)
  # The JavaScript engine, built without run-time types, takes inline functions of the standard library from our
  # programs; the check of the dynamic type would stop at its objects.
  add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-fno-sanitize=vptr>)
  # A block is called by its public interface, with whatever stands for the block as the first argument.
  add_compile_options($<$<COMPILE_LANG_AND_ID:CXX,Clang>:-fno-sanitize=function>)
endif()
# For the core and the fuzz targets alone: what the engine is to find its way through. Optimised, it takes several times
# as many inputs, and the tests under the address sanitizer gain as much time as compiling costs.
add_library(tavlen_fuzzing INTERFACE)
if(TAVLEN_FUZZING_ENGINE)
  target_compile_options(tavlen_fuzzing INTERFACE -fsanitize=fuzzer-no-link -O1)
endif()
