# The static libraries that other programs link: korvelcheck::core, korvelcheck::qmx and korvelcheck::vesk. They exist in this
# build, in projects that contain it, and installed for CMake and pkg-config. docs/embedding.md describes how to use them.
include(${CMAKE_CURRENT_LIST_DIR}/Install.cmake)

# The public headers of src/common, apart from the private ones.
foreach(header check_table.h modify_table.h refusal_row.h result_codes.h text_helpers.h)
  configure_file(src/common/${header} ${PROJECT_BINARY_DIR}/include/common/${header} COPYONLY)
endforeach()

# korvel_library(NAME TARGET...): korvelcheck::NAME, which consists of the objects of these targets.
function(korvel_library name)
  set(library korvelcheck_${name})
  add_library(${library} STATIC)
  add_library(korvelcheck::${name} ALIAS ${library})
  set_target_properties(${library} PROPERTIES OUTPUT_NAME korvelcheck-${name} EXPORT_NAME ${name} LINKER_LANGUAGE CXX)
  foreach(part IN LISTS ARGN)
    target_sources(${library} PRIVATE $<TARGET_OBJECTS:${part}>)
  endforeach()
  target_compile_features(${library} INTERFACE cxx_std_17)
  target_include_directories(${library} INTERFACE
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/include>
    $<INSTALL_INTERFACE:${KORVEL_INSTALL_HEADERS}>)
  if(can_optimise_across)
    korvel_remove_link_time_code(${library} ${ARGN})
  endif()
endfunction()

# Only one version of one compiler can link its link-time code. gcc writes it beside ordinary code, and it is removed from the
# library; clang writes only one of the two.
function(korvel_remove_link_time_code library)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    set_target_properties(${ARGN} PROPERTIES INTERPROCEDURAL_OPTIMIZATION_RELEASE OFF)
    return()
  endif()
  foreach(part IN LISTS ARGN)
    target_compile_options(${part} PRIVATE $<$<CONFIG:Release>:-ffat-lto-objects>)
  endforeach()
  set(remove ${CMAKE_OBJCOPY} --remove-section=.gnu.lto_* --remove-section=.gnu.debuglto_* --strip-symbol=__gnu_lto_v1)
  add_custom_command(TARGET ${library} POST_BUILD
    COMMAND "$<$<CONFIG:Release>:${remove};$<TARGET_FILE:${library}>>" COMMAND_EXPAND_LISTS VERBATIM)
endfunction()

korvel_library(core korvel_common)
korvel_install(korvelcheck_core "The schema-change checker of the Korvel table store")
if(KORVEL_CORE_ONLY)
  return()
endif()

find_package(Threads REQUIRED)
find_package(EXPAT REQUIRED)
korvel_library(base korvel_base)
korvel_library(qmx korvel_qmx korvel_qmx_xml)
korvel_library(vesk korvel_vesk)
target_link_libraries(korvelcheck_base PRIVATE Threads::Threads)
target_link_libraries(korvelcheck_qmx PRIVATE korvelcheck_base EXPAT::EXPAT)
target_link_libraries(korvelcheck_vesk PRIVATE korvelcheck_base)
korvel_install(korvelcheck_base "What korvelcheck-qmx and korvelcheck-vesk share" LIBS -pthread)
korvel_install(korvelcheck_qmx "Schema libraries of the Korvel table store" REQUIRES korvelcheck-base expat)
korvel_install(korvelcheck_vesk "Logging for the checker" REQUIRES korvelcheck-base)
