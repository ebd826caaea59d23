# Decides whether the tool is linked without shared libraries. Most of the time that a small check takes would go to the dynamic
# loader, which looks up thousands of names for the C++ library alone.
#
# Sets KORVEL_PROGRAM_LINK_OPTIONS for the tool, and lets find_package look for static libraries.
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
    unset(EXPAT_LIBRARY CACHE)  # found before, in a tree that was configured otherwise
  endif()
  # What no function reaches is left out.
  target_compile_options(korvel_flags INTERFACE -fPIE -ffunction-sections -fdata-sections)
  list(APPEND KORVEL_PROGRAM_LINK_OPTIONS -static-pie -Wl,--gc-sections)
else()
  message(WARNING "This system lacks a static library: the tool needs shared ones and starts more slowly.")
endif()
