# Makes the packages, unpacks them into an empty root, and compiles the README's first example.
set(root ${SCRATCH}/root)
file(REMOVE_RECURSE ${SCRATCH}/packages ${root})

function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

run(${CPACK} -G DEB --config ${BUILD}/CPackConfig.cmake -B ${SCRATCH}/packages)
file(GLOB packages ${SCRATCH}/packages/*.deb)
set(names "")
foreach(package IN LISTS packages)
  run(${DPKG_DEB} --extract ${package} ${root})
  execute_process(COMMAND ${DPKG_DEB} --field ${package} Package Depends OUTPUT_VARIABLE fields
                  OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCH "Package: ([^\n]*)" found "${fields}")
  list(APPEND names ${CMAKE_MATCH_1})
  # All others are of use with the library of their own version alone.
  if(NOT CMAKE_MATCH_1 STREQUAL libzorp-z1 AND NOT fields MATCHES "libzorp-z1 \\(= [0-9.]+\\)")
    message(FATAL_ERROR "${package} doesn't depend on the library:\n${fields}")
  endif()
endforeach()
if(NOT names STREQUAL "libzorp-z1-clients;libzorp-z1-dev;libzorp-z1")
  message(FATAL_ERROR "unexpected packages: ${names}")
endif()
if(NOT EXISTS ${root}/usr/${LIBDIR}/libzorp_z1_vecabi.so)
  message(FATAL_ERROR "the clients are missing")
endif()

# The first block of C++, its directive apart from its statements.
file(READ ${README} text)
string(FIND "${text}" "```cpp\n" begin)
math(EXPR begin "${begin} + 7")
string(SUBSTRING "${text}" ${begin} -1 text)
string(FIND "${text}" "```" length)
string(SUBSTRING "${text}" 0 ${length} statements)
string(REPLACE "#include <zorp_z1.h>" "" statements "${statements}")
configure_file(${CMAKE_CURRENT_LIST_DIR}/readme_example.cpp.in ${SCRATCH}/readme_example.cpp @ONLY)

run(${CXX} -O2 -mavx512f -Wall -Wextra -Werror -Wno-uninitialized -Wno-maybe-uninitialized
    -I${root}/usr/include ${SCRATCH}/readme_example.cpp -L${root}/usr/${LIBDIR} -lzorp_z1
    -Wl,-rpath,${root}/usr/${LIBDIR} -o ${SCRATCH}/readme_example)
run(${SCRATCH}/readme_example)
