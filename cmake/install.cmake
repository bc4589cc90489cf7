# SPDX-License-Identifier: MIT
# What is installed, in four components: Runtime is what a linked program needs, Wide what makes it faster on
# processors with AVX2, Development what linking one needs, Tools the command.
include(CMakePackageConfigHelpers)

install(TARGETS luxvmk3 luxcore EXPORT luxvm
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Runtime NAMELINK_COMPONENT Development)
if(LUXVM_WIDE)
  install(TARGETS luxvmk3-wide LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Wide)
endif()
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT Development
        FILES_MATCHING PATTERN *.h PATTERN *.hpp PATTERN *.f90)

# For CMake. The width of a pointer is no part of the version's answer: the configuration itself says
# why a 64-bit project cannot have the library.
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/luxvm)
install(EXPORT luxvm NAMESPACE luxvm:: FILE luxvmTargets.cmake DESTINATION ${package_dir}
        COMPONENT Development)
configure_package_config_file(cmake/luxvmConfig.cmake.in luxvmConfig.cmake
                              INSTALL_DESTINATION ${package_dir} NO_SET_AND_CHECK_MACRO
                              NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file(luxvmConfigVersion.cmake VERSION ${LUX_PACKAGE_VERSION}
                                 COMPATIBILITY SameMajorVersion ARCH_INDEPENDENT)
install(FILES ${PROJECT_BINARY_DIR}/luxvmConfig.cmake ${PROJECT_BINARY_DIR}/luxvmConfigVersion.cmake
        DESTINATION ${package_dir} COMPONENT Development)

# For pkg-config. Its files find the prefix from their own place, so that it may be moved; but the
# system's own, whose directories pkg-config knows and leaves out.
set(pc_libdir ${CMAKE_INSTALL_FULL_LIBDIR})
set(pc_includedir ${CMAKE_INSTALL_FULL_INCLUDEDIR})
if(NOT IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
  set(pc_libdir \${prefix}/${CMAKE_INSTALL_LIBDIR})
  file(RELATIVE_PATH up /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
  string(REGEX REPLACE "/$" "" up ${up})
  set(pc_prefix \${pcfiledir}/${up})
else()
  set(pc_prefix ${CMAKE_INSTALL_PREFIX})
endif()
if(CMAKE_INSTALL_PREFIX STREQUAL /usr)
  set(pc_prefix /usr)
endif()
if(NOT IS_ABSOLUTE ${CMAKE_INSTALL_INCLUDEDIR})
  set(pc_includedir \${prefix}/${CMAKE_INSTALL_INCLUDEDIR})
endif()
foreach(name luxvm luxcore)
  configure_file(cmake/${name}.pc.in ${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
          COMPONENT Development)
endforeach()

# The manual's section 1 tells about the command, section 3 about the functions.
install(DIRECTORY ${PROJECT_BINARY_DIR}/man/man3 DESTINATION ${CMAKE_INSTALL_MANDIR} COMPONENT Development
        OPTIONAL)
set(installed luxvmk3 luxcore)
if(LUXVM_TOOLS)
  install(DIRECTORY ${PROJECT_BINARY_DIR}/man/man1 DESTINATION ${CMAKE_INSTALL_MANDIR} COMPONENT Tools OPTIONAL)
  install(TARGETS luxvm RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Tools)
  set(LUXVM_ZSH_COMPLETION_DIR ${CMAKE_INSTALL_DATADIR}/zsh/site-functions CACHE STRING
      "Where the completion for zsh is installed")
  install(FILES ${PROJECT_BINARY_DIR}/completion/luxvm.bash
          DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME luxvm COMPONENT Tools)
  install(FILES ${PROJECT_BINARY_DIR}/completion/luxvm.zsh DESTINATION ${LUXVM_ZSH_COMPLETION_DIR}
          RENAME _luxvm COMPONENT Tools)
  list(APPEND installed luxvm completion)
  if(TARGET man)
    list(APPEND installed man)
  endif()
endif()
# Everything that is installed, and nothing that is only tested with.
add_custom_target(installed DEPENDS ${installed})
