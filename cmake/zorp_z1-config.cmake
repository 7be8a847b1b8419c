# The library, and as components the clients that were installed beside it.
include(${CMAKE_CURRENT_LIST_DIR}/zorp_z1-targets.cmake)
foreach(component IN LISTS zorp_z1_FIND_COMPONENTS)
  include(${CMAKE_CURRENT_LIST_DIR}/zorp_z1-${component}.cmake
          OPTIONAL RESULT_VARIABLE zorp_z1_${component}_FOUND)
  if(NOT zorp_z1_${component}_FOUND AND zorp_z1_FIND_REQUIRED_${component})
    set(zorp_z1_FOUND FALSE)
    set(zorp_z1_NOT_FOUND_MESSAGE "zorp_z1 was installed without its component ${component}")
  endif()
endforeach()
