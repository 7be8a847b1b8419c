# Installs into a scratch prefix, moves it, and builds and runs the consumer against it.
set(prefix ${SCRATCH}/prefix)
file(REMOVE_RECURSE ${SCRATCH}/staging ${prefix} ${SCRATCH}/build)

function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${SCRATCH}/staging)
file(RENAME ${SCRATCH}/staging ${prefix})

run(${CMAKE_COMMAND} -G ${GENERATOR} -S ${CONSUMER} -B ${SCRATCH}/build
    -DCMAKE_CXX_COMPILER=${CXX} -DCMAKE_PREFIX_PATH=${prefix})
run(${CMAKE_COMMAND} --build ${SCRATCH}/build)
run(${SCRATCH}/build/consumer)

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
  message(STATUS "pkg-config is not installed: its file is not tested")
  return()
endif()
set(ENV{PKG_CONFIG_PATH} ${prefix}/${LIBDIR}/pkgconfig)
execute_process(COMMAND ${PKG_CONFIG} --cflags --libs zorp_z1 OUTPUT_VARIABLE flags
                OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(flags UNIX_COMMAND "${flags}")
run(${CXX} -O2 -mavx512f ${CONSUMER}/consumer.cpp ${flags} -Wl,-rpath,${prefix}/${LIBDIR}
    -o ${SCRATCH}/build/consumer_pkgconfig)
run(${SCRATCH}/build/consumer_pkgconfig)
