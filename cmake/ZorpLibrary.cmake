# How the library is built. A family's folder has a file kernels.cmake that calls
#
#   zorp_kernels(HEADER exp/exp.h GROUPS exp exp2 exp10 [ELEMENTS double float half])
#   zorp_sources(exp/exp_blocks.cpp)
#
# The entry points of its kernels are written by zorp_generate from the grammar of exported names.
# Objects of double and float, blocks and rare routines are compiled once; those of half once for
# each flavour.

set(ZORP_KERNEL_OPTIONS
    -O2 -g1 -fPIC -fvisibility=hidden -ffreestanding -fno-exceptions -fno-rtti -fno-math-errno
    # Rare routines round every operation by itself.
    -ffp-contract=off
    -fcf-protection=full
    -mavx512f -mavx512dq -mavx512bw -mavx512vl -mavx512vbmi2 -mfma -mf16c
    # The register contract: registers that the compiler never touches, or restores.
    -fcall-saved-rsi -fcall-saved-rdi
    # A tail call would restore rsi and rdi over the arguments that it passes in them.
    -fno-optimize-sibling-calls
    # A caller need not align the stack beyond 8 bytes.
    -mincoming-stack-boundary=3
    -ffixed-xmm16 -ffixed-xmm17 -ffixed-xmm18 -ffixed-xmm19 -ffixed-xmm20 -ffixed-xmm21
    -ffixed-xmm22 -ffixed-xmm23 -ffixed-xmm24 -ffixed-xmm25 -ffixed-xmm26 -ffixed-xmm27
    -ffixed-xmm28 -ffixed-xmm29 -ffixed-xmm30 -ffixed-xmm31
    -ffixed-k4 -ffixed-k5 -ffixed-k6 -ffixed-k7
    # g++ 12's own intrinsics read undefined registers on purpose and are warned of.
    -Wall -Wextra -Werror -Wno-uninitialized -Wno-maybe-uninitialized)

function(zorp_sources)
  foreach(source IN LISTS ARGN)
    set_property(GLOBAL APPEND PROPERTY ZORP_COMMON_SOURCES ${source})
    set_property(GLOBAL APPEND PROPERTY ZORP_WRITTEN_SOURCES ${PROJECT_SOURCE_DIR}/${source})
  endforeach()
endfunction()

function(zorp_kernels)
  cmake_parse_arguments(ARG "" "HEADER" "GROUPS;ELEMENTS" ${ARGN})
  if(NOT ARG_ELEMENTS)
    set(ARG_ELEMENTS double float half)
  endif()
  foreach(group IN LISTS ARG_GROUPS)
    set_property(GLOBAL APPEND PROPERTY ZORP_GROUPS ${group})
    foreach(element IN LISTS ARG_ELEMENTS)
      # For other builds of the same kernels: element, header and group of each source.
      set_property(GLOBAL APPEND PROPERTY ZORP_KERNEL_SOURCES "${element} ${ARG_HEADER} ${group}")
      set(source ${PROJECT_BINARY_DIR}/kernels/${group}_${element}.cpp)
      zorp_generated(${source} kernels ${element} ${ARG_HEADER} ${group})
      if(element STREQUAL half)
        set_property(GLOBAL APPEND PROPERTY ZORP_HALF_SOURCES ${source})
      else()
        set_property(GLOBAL APPEND PROPERTY ZORP_COMMON_SOURCES ${source})
      endif()
    endforeach()
  endforeach()
endfunction()

# A file that holds what zorp_generate prints. It is left alone while its text stays the same, so
# that a change of the grammar recompiles only the kernels that it touches.
function(zorp_generated file)
  cmake_path(GET file PARENT_PATH directory)
  add_custom_command(
    OUTPUT ${file}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${directory}
    COMMAND zorp_generate ${ARGN} > ${file}.new
    COMMAND ${CMAKE_COMMAND} -E copy_if_different ${file}.new ${file}
    DEPENDS zorp_generate
    COMMENT "Generating ${file}"
    VERBATIM)
endfunction()

function(zorp_objects name)
  add_library(${name} OBJECT ${ARGN})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
  target_compile_options(${name} PRIVATE ${ZORP_KERNEL_OPTIONS})
  # Parsing the intrinsics takes half the time of a small family.
  target_precompile_headers(${name} PRIVATE ${PROJECT_SOURCE_DIR}/frame/kernel.h)
endfunction()

function(zorp_shared name flavour directory)
  add_library(${name} SHARED $<TARGET_OBJECTS:zorp_common> $<TARGET_OBJECTS:zorp_half_${flavour}>)
  set_target_properties(${name} PROPERTIES
    OUTPUT_NAME zorp_z1 LIBRARY_OUTPUT_DIRECTORY ${directory} LINKER_LANGUAGE CXX
    LINK_DEPENDS ${PROJECT_BINARY_DIR}/zorp_z1.map)
  target_link_options(${name} PRIVATE
    -nostdlib -Wl,-z,defs -Wl,-z,ibt,-z,shstk -Wl,-z,noexecstack -Wl,--build-id
    -Wl,-soname,libzorp_z1.so -Wl,--version-script,${PROJECT_BINARY_DIR}/zorp_z1.map)
  target_include_directories(${name} INTERFACE
    "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include;${PROJECT_BINARY_DIR}/include>")
  add_dependencies(${name} zorp_map zorp_header)
endfunction()

# Whether this host's processor has half arithmetic.
function(zorp_host_flavour result)
  file(WRITE ${PROJECT_BINARY_DIR}/host.cpp
       "int main() { return __builtin_cpu_supports(\"avx512fp16\") ? 0 : 1; }\n")
  try_run(ZORP_HOST_LACKS_FP16 compiled ${PROJECT_BINARY_DIR}/host
          ${PROJECT_BINARY_DIR}/host.cpp)
  if(compiled AND ZORP_HOST_LACKS_FP16 EQUAL 0)
    set(${result} native PARENT_SCOPE)
  else()
    set(${result} emulated PARENT_SCOPE)
  endif()
endfunction()

# The declarations of the public header, with the measured errors where there are some.
function(zorp_header groups)
  set(accuracy ${PROJECT_SOURCE_DIR}/docs/accuracy.md)
  set(header ${PROJECT_BINARY_DIR}/include/zorp_z1_kernels.h)
  zorp_generated(${header} header ${accuracy} ${groups})
  if(EXISTS ${accuracy})
    add_custom_command(OUTPUT ${header} DEPENDS ${accuracy} APPEND)
  endif()
  add_custom_target(zorp_header DEPENDS ${header})
endfunction()

function(zorp_add_libraries)
  set(flavour ${ZORP_HALF})
  if(flavour STREQUAL auto)
    zorp_host_flavour(flavour)
  elseif(NOT flavour MATCHES "^(native|emulated)$")
    message(FATAL_ERROR "ZORP_HALF is native, emulated or auto, not '${ZORP_HALF}'")
  endif()
  message(STATUS "Half arithmetic of libzorp_z1.so: ${flavour}")

  get_property(groups GLOBAL PROPERTY ZORP_GROUPS)
  get_property(common GLOBAL PROPERTY ZORP_COMMON_SOURCES)
  get_property(half GLOBAL PROPERTY ZORP_HALF_SOURCES)
  set_property(GLOBAL PROPERTY ZORP_FLAVOUR ${flavour})

  zorp_generated(${PROJECT_BINARY_DIR}/zorp_z1.map version-script ${groups})
  add_custom_target(zorp_map DEPENDS ${PROJECT_BINARY_DIR}/zorp_z1.map)
  zorp_header("${groups}")

  zorp_objects(zorp_common ${common})
  zorp_objects(zorp_half_emulated EXCLUDE_FROM_ALL ${half})
  zorp_objects(zorp_half_native EXCLUDE_FROM_ALL ${half})
  target_compile_options(zorp_half_native PRIVATE -mavx512fp16)

  zorp_shared(zorp_z1 ${flavour} ${PROJECT_BINARY_DIR})
  add_custom_command(TARGET zorp_z1 POST_BUILD COMMAND zorp_generate summary ${groups} VERBATIM)
  if(ZORP_BUILD_TESTS)
    zorp_shared(zorp_z1_emulated emulated ${PROJECT_BINARY_DIR}/emulated)
    zorp_shared(zorp_z1_native native ${PROJECT_BINARY_DIR}/native)
  endif()
endfunction()
