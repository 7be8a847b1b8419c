# Runs power_option without the layer and with it, through the loader.
file(REMOVE_RECURSE ${SCRATCH})
file(MAKE_DIRECTORY ${SCRATCH}/cache)
set(ENV{POCL_CACHE_DIR} ${SCRATCH}/cache)
set(prices "double8 +price 0.3816.*float16 +price 0.3809")
set(differences "double8 +largest difference of payoffs: [0-9.]+e-1[0-9]\n")
string(APPEND differences "float16 +largest difference of payoffs: [0-9.]+e-0[5-9]")

# Output, and what is told on stderr, match these patterns.
function(expect output_pattern error_pattern)
  execute_process(COMMAND ${PROGRAM} ${SOURCE} ${SCRATCH}/payoffs.bin RESULT_VARIABLE result
                  OUTPUT_VARIABLE output ERROR_VARIABLE error)
  if(NOT result EQUAL 0 OR NOT output MATCHES "${output_pattern}"
     OR NOT "<${error}>" MATCHES "^<${error_pattern}>$")
    message(FATAL_ERROR "status ${result}, output\n${output}\nand\n${error}\n"
                        "instead of ${output_pattern} and ${error_pattern}")
  endif()
  message("${output}")
endfunction()

expect("${prices}" "")

# The layer as a user meets it, installed and moved: the library is beside it.
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${SCRATCH}/staging
                OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
file(RENAME ${SCRATCH}/staging ${SCRATCH}/prefix)
set(ENV{OPENCL_LAYERS} ${SCRATCH}/prefix/${LIBDIR}/libzorp_z1_opencl_layer.so)
set(ENV{ZORP_Z1_OPENCL_LOG} 1)
file(READ /proc/cpuinfo processor)
if(NOT processor MATCHES "avx512_vbmi2")
  expect("${prices}.*: 0\n.*: 0\n" "zorp_z1: this processor has no AVX-512[^\n]*\n")
  message(STATUS "This processor lacks AVX-512: nothing more to test")
  return()
endif()
set(program "zorp_z1: program [^\n]*: built-ins are defined in front of its source\n")
foreach(mode all "")
  set(ENV{ZORP_Z1_OPENCL} "${mode}")
  expect("${prices}.*${differences}" "zorp_z1: built-ins are served[^\n]*\n${program}${program}")
endforeach()
set(ENV{ZORP_Z1_OPENCL} none)
expect("${prices}.*: 0\n.*: 0\n" "zorp_z1: ZORP_Z1_OPENCL=none[^\n]*\n")

unset(ENV{ZORP_Z1_OPENCL})
unset(ENV{ZORP_Z1_OPENCL_LOG})
expect("${prices}.*${differences}" "")

# A library that can't be loaded is told once.
file(REMOVE ${SCRATCH}/prefix/${LIBDIR}/libzorp_z1.so)
expect("${prices}.*: 0\n.*: 0\n" "zorp_z1: programs run without the library: [^\n]*\n")
