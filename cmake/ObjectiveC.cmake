# GCC's Objective-C run time for the library's bridge, and support for the Objective-C sources of tests and benchmarks:
# stand-ins for system classes, and comparisons with GNUstep's Foundation. The library itself contains no Objective-C.
find_program(TAVLEN_OBJC_COMPILER gcc-12 REQUIRED)
execute_process(COMMAND ${TAVLEN_OBJC_COMPILER} -print-file-name=include
  OUTPUT_VARIABLE gcc_include OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)

add_library(tavlen_objc_runtime INTERFACE)
target_link_libraries(tavlen_objc_runtime INTERFACE objc BlocksRuntime)
# Programs that do not use the bridge do not load the run time.
target_link_options(tavlen_objc_runtime INTERFACE "LINKER:--as-needed")
# The run time's headers are in the same folder as GCC's own headers, which clang must not find before its own.
target_compile_options(tavlen_objc_runtime INTERFACE "$<$<COMPILE_LANG_AND_ID:CXX,Clang>:SHELL:-idirafter ${gcc_include}>")

# For a target of Objective-C sources, after enable_language(OBJC).
function(tavlen_use_foundation target)
  target_compile_options(${target} PRIVATE
    -std=gnu11 -fexceptions -fobjc-exceptions -fconstant-string-class=NSConstantString -pthread)
  target_compile_definitions(${target} PRIVATE
    _NATIVE_OBJC_EXCEPTIONS GNUSTEP GNUSTEP_BASE_LIBRARY=1 GNU_RUNTIME=1)
  target_include_directories(${target} SYSTEM PRIVATE /usr/include/GNUstep)
  target_link_libraries(${target} PRIVATE gnustep-base objc BlocksRuntime)
endfunction()
