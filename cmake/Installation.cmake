# What cmake --install and cpack put where. Two parts: `command` is what users of the command need, `development` what
# programs are built with.
include(CMakePackageConfigHelpers)

# The library.
install(DIRECTORY "${PROJECT_SOURCE_DIR}/tavlen" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" COMPONENT development
  FILES_MATCHING PATTERN "*.h" PATTERN "detail" EXCLUDE)
set(package "${CMAKE_INSTALL_LIBDIR}/cmake/tavlen")
foreach(kind static shared)
  if(TARGET tavlen_${kind})
    install(TARGETS tavlen_${kind} EXPORT tavlen-${kind} COMPONENT development)
    install(EXPORT tavlen-${kind} NAMESPACE tavlen:: DESTINATION "${package}" COMPONENT development)
  endif()
endforeach()
configure_package_config_file(cmake/tavlen-config.cmake.in "${PROJECT_BINARY_DIR}/tavlen-config.cmake"
  INSTALL_DESTINATION "${package}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/tavlen-config-version.cmake" COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/tavlen-config.cmake" "${PROJECT_BINARY_DIR}/tavlen-config-version.cmake"
  cmake/Dependencies.cmake DESTINATION "${package}" COMPONENT development)

if(NOT APPLE)  # where the libraries have no modules
  list(JOIN TAVLEN_PKG_CONFIG_MODULES ", " TAVLEN_PKG_CONFIG_REQUIREMENTS)
  # Relative, because the prefix may be given when it is installed.
  file(RELATIVE_PATH TAVLEN_PKG_CONFIG_TO_PREFIX "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
  configure_file(cmake/tavlen.pc.in "${PROJECT_BINARY_DIR}/tavlen.pc" @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/tavlen.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)
endif()

# The programs, and the resources that they look for next to themselves.
if(TAVLEN_COMMAND)
  install(TARGETS tavlen COMPONENT command)
endif()
if(TAVLEN_TOOLS)
  install(TARGETS kvfileops COMPONENT command)
  # Programs start it on a device; users do not.
  install(TARGETS dumpagent DESTINATION "${CMAKE_INSTALL_LIBEXECDIR}/tavlen" COMPONENT command)
endif()
if(TARGET tavlenloader)
  install(TARGETS tavlenloader LIBRARY DESTINATION lib/tavlen COMPONENT command)
endif()
install(DIRECTORY "${PROJECT_BINARY_DIR}/share/" DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}" COMPONENT command OPTIONAL
  PATTERN "zsh" EXCLUDE)
# Debian's zsh looks for the completion of packages in a folder of its own. The prefix is known when it is installed.
install(CODE "
  set(folder site-functions)
  if(CMAKE_INSTALL_PREFIX STREQUAL \"/usr\")
    set(folder vendor-completions)
  endif()
  file(GLOB functions \"${PROJECT_BINARY_DIR}/share/zsh/site-functions/_*\")
  file(INSTALL \${functions} DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DATAROOTDIR}/zsh/\${folder}\")"
  COMPONENT command)
install(FILES CHANGELOG.md CONTRIBUTING.md LICENSE README.md SECURITY.md DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT command)
install(FILES transpiler/README.md DESTINATION "${CMAKE_INSTALL_DOCDIR}/transpiler" COMPONENT command)
install(DIRECTORY docs examples DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT command USE_SOURCE_PERMISSIONS
  PATTERN "device" EXCLUDE)
install(FILES LICENSE DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/doc/libtavlen-dev" COMPONENT development)

# Debian packages: cpack -G DEB.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "The Tavlen developers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGING_INSTALL_PREFIX "/usr")
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL command development)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMMAND_PACKAGE_NAME tavlen)
set(CPACK_DEBIAN_COMMAND_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_COMMAND_PACKAGE_SHLIBDEPS ON)
# These are loaded when they are needed, which the search for linked libraries does not see.
set(CPACK_DEBIAN_COMMAND_PACKAGE_DEPENDS "libjavascriptcoregtk-4.1-0, libzip4")
set(CPACK_DEBIAN_COMMAND_PACKAGE_RECOMMENDS libgnustep-base1.28)
set(CPACK_COMPONENT_COMMAND_DESCRIPTION "The command: makes, checks, builds and installs app tweaks")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libtavlen-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libjavascriptcoregtk-4.1-0, libdeflate-dev, libicu-dev, libjpeg-dev, libxml2-dev, libpng-dev, \
zlib1g-dev, uuid-dev, libzip4, libobjc-12-dev, libblocksruntime-dev, pkg-config")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "tavlen (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "The library: headers, the static and the shared library")
include(CPack)
