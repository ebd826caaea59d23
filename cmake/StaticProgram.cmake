# Decides whether to link the tool without shared libraries. With them, a small check would spend most of its time in the dynamic
# loader, which resolves thousands of symbols for the C++ library alone.
#
# Sets KORVEL_PROGRAM_LINK_OPTIONS for the tool, and makes find_package search for static libraries.
set(KORVEL_PROGRAM_LINK_OPTIONS -Wl,-z,relro,-z,now)
if(NOT KORVEL_STATIC OR KORVEL_SANITIZE OR KORVEL_COVERAGE)
  return()
endif()

include(CheckCXXSourceCompiles)
set(CMAKE_REQUIRED_FLAGS -fPIE)
set(CMAKE_REQUIRED_LINK_OPTIONS -static-pie)
set(CMAKE_REQUIRED_LIBRARIES expat)
check_cxx_source_compiles("
  #include <expat.h>
  int main() { XML_ParserFree(XML_ParserCreate(nullptr)); }" KORVEL_LINKS_STATIC)
unset(CMAKE_REQUIRED_FLAGS)
unset(CMAKE_REQUIRED_LINK_OPTIONS)
unset(CMAKE_REQUIRED_LIBRARIES)

if(KORVEL_LINKS_STATIC)
  set(CMAKE_FIND_LIBRARY_SUFFIXES .a)
  if(NOT EXPAT_LIBRARY MATCHES "\\.a$")
    unset(EXPAT_LIBRARY CACHE)  # cached by an earlier configuration with other options
  endif()
  # Drop unreachable functions and data.
  target_compile_options(korvel_flags INTERFACE -ffunction-sections -fdata-sections)
  # The linker lists the libraries that it read, for the list of contents of releases (scripts/sbom).
  list(APPEND KORVEL_PROGRAM_LINK_OPTIONS
    -static-pie -Wl,--gc-sections "-Wl,--dependency-file=${PROJECT_BINARY_DIR}/korvelcheck.d")
else()
  message(WARNING "A static library is missing on this system: the tool will use shared libraries and start more slowly.")
endif()
