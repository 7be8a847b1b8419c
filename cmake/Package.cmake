# Debian packages, by cpack -G DEB: the library, what programs are built with, the clients.
set(CPACK_PACKAGE_NAME libzorp-z1)
set(CPACK_PACKAGE_CONTACT "libzorp_z1 developers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL library development clients)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libzorp-z1)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libzorp-z1-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_CLIENTS_PACKAGE_NAME libzorp-z1-clients)
set(CPACK_DEBIAN_CLIENTS_PACKAGE_SECTION libs)
# Clients may need libraries of the system.
find_program(ZORP_SHLIBDEPS dpkg-shlibdeps)
if(ZORP_SHLIBDEPS)
  set(CPACK_DEBIAN_CLIENTS_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
endif()

include(CPack)
cpack_add_component(library DESCRIPTION "The shared library")
cpack_add_component(development DEPENDS library
                    DESCRIPTION "Header, CMake package and pkg-config file")
cpack_add_component(clients DEPENDS library
                    DESCRIPTION "What lets stock compilers and runtimes call the library")
