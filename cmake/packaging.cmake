# Debian packages made by `cpack -G DEB` in a build directory: the run-time, named after
# its soname as Debian's policy for shared libraries asks (libvrn90_t.so.1 gives
# libvrn90-t1, an underscore not being allowed in a package name), and its development
# files, which depend on exactly that version of it.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vrn90)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "libvrn90_t developers <libvrn90-t@localhost>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)

set(VRN_RUNTIME_PACKAGE libvrn90-t${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${VRN_RUNTIME_PACKAGE})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
  "run-time library of the VR Fortran compiler\nEvery program the compiler builds links it: Fortran I/O statements, format\ncompilation, the array intrinsics, random numbers and STOP. With its message\ncatalogue and the manual page of the VRNRTEOPTS options.")
# The shlibs file tells packages built against the library which version to depend on;
# the ldconfig trigger comes with it.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
if(CMAKE_CROSSCOMPILING)
  # dpkg-shlibdeps cannot read the target's objects; these are the libraries it links.
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE powerpc)
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "libc6 (>= 2.34), libstdc++6 (>= 12)")
else()
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
endif()

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libvrn90-t-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${VRN_RUNTIME_PACKAGE} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
  "development files of the VR Fortran run-time library\nHeaders of the interface compiled code calls, the link-time name of the library,\na CMake package (find_package(vrn90), target vrn90::vrn90_t) and a pkg-config\nfile (vrn90).")

include(CPack)
