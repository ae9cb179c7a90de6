# systemd reads units from lib/systemd/system below /usr and /usr/local. They are off until an administrator enables
# them.
install(
  FILES
    ${CMAKE_CURRENT_LIST_DIR}/systemd/kestrel-history.service
    ${CMAKE_CURRENT_LIST_DIR}/systemd/kestrel-metrics.service
    ${CMAKE_CURRENT_LIST_DIR}/systemd/kestrel-metrics.timer
  DESTINATION lib/systemd/system
)

# CPack builds the Debian packages from the installed files: kestrel (programs), libplatkit1 (library), libplatkit-dev
# (headers) and, if libvirt-dev is installed, nodal-guests.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL runtime library development)
if(TARGET nodal-guests)
  list(APPEND CPACK_COMPONENTS_ALL guests)
endif()
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
# kestrel's references to the library have no versions, so dpkg-shlibdeps cannot tell which version it needs.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "libplatkit1 (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SUGGESTS nodal-guests)
# Each package sets its own summary.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
"memory reports of a hypervisor host
kestrel reports how a hypervisor host uses its memory, as a table or as CSV.
Nineteen reports cover groups, virtual machines, processes, swap, large pages,
kernel heaps and persistent memory. kestrel reads the running host (control
groups, processes, QEMU/KVM guests) or a snapshot file.
.
The companion nodal saves, compares and verifies snapshots, and exports
metrics to Prometheus.")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libplatkit1)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)
# Packages of programs that link the library get a dependency on this package, through its symbols file (from
# debian.cmake) or its shlibs file.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY >=)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA
  ${CMAKE_CURRENT_LIST_DIR}/triggers
  ${PROJECT_BINARY_DIR}/packaging/symbols
)
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION
"system-information tree of a hypervisor host - shared library
libplatkit reads the system information of a hypervisor host, running or saved
in a snapshot, as a tree of fixed-size records with a C interface.
.
This package contains the shared library.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libplatkit-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libplatkit1 (= ${PROJECT_VERSION}), libc6-dev | libc-dev")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
"system-information tree of a hypervisor host - development files
libplatkit reads the system information of a hypervisor host, running or saved
in a snapshot, as a tree of fixed-size records with a C interface.
.
This package contains the headers, the manual pages, the linker name of the
library and its pkg-config file.")

set(CPACK_DEBIAN_GUESTS_PACKAGE_NAME nodal-guests)
set(CPACK_DEBIAN_GUESTS_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_GUESTS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_GUESTS_DESCRIPTION
"memory figures from the monitors of virtual machines
nodal-guests asks libvirt and QEMU for figures that only the monitors of
virtual machines know: balloons, the memory figures of guests, and migrations.
It writes the figures to a file for kestrel and nodal. If a monitor does not
answer, only its own figures are missing.
.
A systemd timer runs it. The timer is off by default.")

include(CPack)
