# Debian packages, made by CPack of what is installed: kestrel (the programs, with the library that they need) and
# libplatkit-dev (what a program over the library is compiled with).
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_CONTACT "The kestrel developers <kestrel@packages.invalid>")
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/debian.cmake)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME kestrel)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
# A program that is linked with the library depends on the package.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY >=)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/triggers)
# Each package has a first line of its own.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
"memory reports of a hypervisor host
kestrel shows an administrator where a hypervisor host's memory goes: one
report per run, as an aligned table or as CSV. It reads the running host
(control groups, processes, QEMU/KVM guests, /proc and /sys) or a saved host
in a snapshot file.
.
The companion nodal shows the tree of system information that the reports are
made of, and saves, shows and verifies snapshots. Both come with libplatkit,
the library that has the tree as a C interface.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libplatkit-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "kestrel (= ${PROJECT_VERSION}), libc6-dev | libc-dev")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
"system-information tree of a hypervisor host - development files
libplatkit reads the system information of a hypervisor host, running or saved
in a snapshot, as a tree of fixed-size records behind a C interface.
.
This package has its headers, the catalogue of the tree, and what the linker
and pkg-config need.")

include(CPack)
