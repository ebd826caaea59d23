# Installs libraries for CMake and pkg-config, and the public headers.
#
#   korvel_install(TARGET DESCRIPTION [HEADERS DIRECTORY] [REQUIRES PACKAGE...] [LIBS OPTION...])
#
# installs a library under its OUTPUT_NAME, as korvelcheck::EXPORT_NAME and as a package of pkg-config, which needs other PACKAGEs
# and is linked with OPTIONs. DIRECTORY, by default that of the C++ headers, is where its include paths start. The library also
# needs a component in korvelcheckConfig.cmake.in.
if(NOT KORVEL_INSTALL)
  function(korvel_install)
  endfunction()
  return()
endif()
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# Include paths of C++ begin with generic names such as common/, so they start in a directory of ours.
set(KORVEL_INSTALL_HEADERS ${CMAKE_INSTALL_INCLUDEDIR}/korvelcheck)
set(KORVEL_INSTALL_PACKAGE ${CMAKE_INSTALL_LIBDIR}/cmake/korvelcheck)

function(korvel_install library description)
  cmake_parse_arguments(PARSE_ARGV 2 pc "" "HEADERS" "REQUIRES;LIBS")
  if(NOT pc_HEADERS)
    set(pc_HEADERS ${KORVEL_INSTALL_HEADERS})
  endif()
  get_target_property(name ${library} EXPORT_NAME)
  get_target_property(output ${library} OUTPUT_NAME)
  install(TARGETS ${library} EXPORT korvelcheck-${name})
  install(EXPORT korvelcheck-${name} NAMESPACE korvelcheck:: DESTINATION ${KORVEL_INSTALL_PACKAGE})

  # Relative to the file, so that an installation can be moved.
  file(RELATIVE_PATH up ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
  cmake_path(APPEND headers "\${prefix}" ${pc_HEADERS})
  cmake_path(APPEND libraries "\${prefix}" ${CMAKE_INSTALL_LIBDIR})
  list(JOIN pc_REQUIRES " " requires)
  list(JOIN pc_LIBS " " libs)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/library.pc.in ${PROJECT_BINARY_DIR}/${output}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${output}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()

# The headers and examples of the libraries that are built. The checker alone needs what a store implements.
install(DIRECTORY ${PROJECT_BINARY_DIR}/include/common DESTINATION ${KORVEL_INSTALL_HEADERS})
set(examples embed-own-store)
if(KORVEL_CORE_ONLY)
  foreach(header qmx/qmx_metalib_kernel.h qmx/qmx_types.h vesk/closed_category.h vesk/vesk_category.h vesk/vesk_event.h)
    cmake_path(GET header PARENT_PATH directory)
    install(FILES include/${header} DESTINATION ${KORVEL_INSTALL_HEADERS}/${directory})
  endforeach()
else()
  install(DIRECTORY include/qmx include/vesk DESTINATION ${KORVEL_INSTALL_HEADERS})
  list(APPEND examples embed-cpp shop)
  if(KORVEL_PROGRAM)  # with the C interface
    list(APPEND examples embed embed-go embed-java embed-python)
  endif()
endif()
list(TRANSFORM examples PREPEND examples/)
install(DIRECTORY ${examples} DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)
configure_package_config_file(cmake/korvelcheckConfig.cmake.in ${PROJECT_BINARY_DIR}/korvelcheckConfig.cmake
  INSTALL_DESTINATION ${KORVEL_INSTALL_PACKAGE} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/korvelcheckConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/korvelcheckConfig.cmake ${PROJECT_BINARY_DIR}/korvelcheckConfigVersion.cmake
  DESTINATION ${KORVEL_INSTALL_PACKAGE})
