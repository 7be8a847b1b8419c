# Library, public header, CMake package and pkg-config file; the same for each client.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(ZORP_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/zorp_z1)

# Relative paths, so that the installed tree can be moved.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX
           BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig OUTPUT_VARIABLE ZORP_PC_TO_PREFIX)
function(zorp_install_pkgconfig name description component)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/pkgconfig.pc.in ${PROJECT_BINARY_DIR}/${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
          COMPONENT ${component})
endfunction()

# A client that programs are linked to: target zorp_z1_NAME, for users zorp::NAME of
# find_package(zorp_z1 COMPONENTS NAME), and zorp_z1_NAME of pkg-config.
function(zorp_install_client name description)
  set_target_properties(zorp_z1_${name} PROPERTIES EXPORT_NAME ${name})
  install(TARGETS zorp_z1_${name} EXPORT zorp_z1-${name}
          LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT clients)
  install(EXPORT zorp_z1-${name} NAMESPACE zorp:: DESTINATION ${ZORP_PACKAGE_DIR}
          COMPONENT clients)
  zorp_install_pkgconfig(zorp_z1_${name} ${description} clients)
endfunction()

install(TARGETS zorp_z1 EXPORT zorp_z1-targets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES include/zorp_z1.h ${PROJECT_BINARY_DIR}/include/zorp_z1_kernels.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(EXPORT zorp_z1-targets NAMESPACE zorp:: DESTINATION ${ZORP_PACKAGE_DIR}
        COMPONENT development)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/zorp_z1-config-version.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES cmake/zorp_z1-config.cmake ${PROJECT_BINARY_DIR}/zorp_z1-config-version.cmake
        DESTINATION ${ZORP_PACKAGE_DIR} COMPONENT development)
zorp_install_pkgconfig(zorp_z1 ${PROJECT_DESCRIPTION} development)
