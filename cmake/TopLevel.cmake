# Settings of a build of this project alone. As a subdirectory, it leaves them to the project that contains it.
if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "" FORCE)
endif()
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# The checker calls the metadata library for every member of every entry, so the tool is optimized across the two. The checker
# alone is not, because it may be linked with another compiler.
if(NOT KORVEL_CORE_ONLY)
  include(CheckIPOSupported)
  check_ipo_supported(RESULT can_optimise_across OUTPUT unused LANGUAGES CXX)
  if(can_optimise_across)
    set(CMAKE_INTERPROCEDURAL_OPTIMIZATION_RELEASE ON)
  endif()
endif()
