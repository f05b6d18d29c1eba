# Support for the Objective-C sources of the loader and of tests and benchmarks: stand-ins for system classes, and comparisons
# with GNUstep's Foundation. The library itself contains no Objective-C.

if(NOT APPLE)
  # The compiler that belongs to the linked run time, whichever compiler builds the rest.
  find_program(TAVLEN_OBJC_COMPILER gcc-12 REQUIRED)
  set(CMAKE_OBJC_COMPILER ${TAVLEN_OBJC_COMPILER})
endif()
enable_language(OBJC)

# For a target of Objective-C sources.
function(tavlen_use_foundation target)
  target_compile_options(${target} PRIVATE
    -pthread "$<$<COMPILE_LANGUAGE:OBJC>:-std=gnu11;-fexceptions;-fobjc-exceptions;-fconstant-string-class=NSConstantString>")
  target_compile_definitions(${target} PRIVATE
    _NATIVE_OBJC_EXCEPTIONS GNUSTEP GNUSTEP_BASE_LIBRARY=1 GNU_RUNTIME=1)
  target_include_directories(${target} SYSTEM PRIVATE /usr/include/GNUstep)
  target_link_libraries(${target} PRIVATE gnustep-base objc BlocksRuntime)
endfunction()
