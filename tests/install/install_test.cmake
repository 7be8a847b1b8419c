# Installs into a scratch prefix, moves it, and builds and runs the consumers against it.
set(prefix ${SCRATCH}/prefix)
file(REMOVE_RECURSE ${SCRATCH}/staging ${prefix} ${SCRATCH}/build)

function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# What a program is linked to: the kernels under their vector names, and nobody else's.
function(expect_vecabi_alone program)
  execute_process(COMMAND ${READELF} -d ${program} OUTPUT_VARIABLE dynamic
                  COMMAND_ERROR_IS_FATAL ANY)
  if(NOT dynamic MATCHES "libzorp_z1_vecabi\\.so" OR dynamic MATCHES "mvec")
    message(FATAL_ERROR "${program} is linked to other libraries than it should be:\n${dynamic}")
  endif()
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${SCRATCH}/staging)
file(RENAME ${SCRATCH}/staging ${prefix})

run(${CMAKE_COMMAND} -G ${GENERATOR} -S ${CONSUMER} -B ${SCRATCH}/build
    -DCMAKE_CXX_COMPILER=${CXX} -DCMAKE_PREFIX_PATH=${prefix})
run(${CMAKE_COMMAND} --build ${SCRATCH}/build)
run(${SCRATCH}/build/consumer)
run(${SCRATCH}/build/loop_consumer)
expect_vecabi_alone(${SCRATCH}/build/loop_consumer)

# OpenCL C by the bitcode libraries: nothing stays undefined but kernels.
if(CLANG_19)
  foreach(library zorp_z1_opencl zorp_z1_opencl_relaxed)
    run(${CLANG_19} -x cl -cl-std=CL3.0 -target x86_64-unknown-linux-gnu -march=icelake-server -O2 -fPIC
        -Xclang -finclude-default-header -Xclang -mlink-builtin-bitcode
        -Xclang ${prefix}/${LIBDIR}/zorp_z1/${library}.bc -c ${CONSUMER}/kernel.cl
        -o ${SCRATCH}/build/kernel.o)
    run(${CXX} -shared -nostdlib -Wl,-z,defs ${SCRATCH}/build/kernel.o
        ${prefix}/${LIBDIR}/libzorp_z1.so -o ${SCRATCH}/build/kernel.so)
  endforeach()
endif()

if(NOT PKG_CONFIG)
  message(STATUS "pkg-config is not installed: its files are not tested")
  return()
endif()
set(ENV{PKG_CONFIG_PATH} ${prefix}/${LIBDIR}/pkgconfig)

function(build_with_pkgconfig program package)
  execute_process(COMMAND ${PKG_CONFIG} --cflags --libs ${package} OUTPUT_VARIABLE flags
                  OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(flags UNIX_COMMAND "${flags}")
  run(${CXX} -O3 -ffast-math -mavx512f ${CONSUMER}/${program}.cpp -Wl,--as-needed ${flags}
      -Wl,-rpath,${prefix}/${LIBDIR} -o ${SCRATCH}/build/${program}_pkgconfig)
  run(${SCRATCH}/build/${program}_pkgconfig)
endfunction()
build_with_pkgconfig(consumer zorp_z1)
build_with_pkgconfig(loop_consumer zorp_z1_vecabi)
expect_vecabi_alone(${SCRATCH}/build/loop_consumer_pkgconfig)
