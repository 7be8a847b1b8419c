# Library, public header, CMake package and pkg-config file.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS zorp_z1 EXPORT zorp_z1-targets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES include/zorp_z1.h ${PROJECT_BINARY_DIR}/include/zorp_z1_kernels.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT zorp_z1-targets NAMESPACE zorp:: FILE zorp_z1-config.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/zorp_z1)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/zorp_z1-config-version.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/zorp_z1-config-version.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/zorp_z1)
# Relative paths, so that the installed tree can be moved.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX
           BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig OUTPUT_VARIABLE ZORP_PC_TO_PREFIX)
configure_file(cmake/zorp_z1.pc.in zorp_z1.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zorp_z1.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
