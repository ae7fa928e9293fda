# Debian packages by CPack: the library, what developers need, and the program. To be built
# with the preset "package".

set(LIRVOX_PACKAGE_MAINTAINER "Lirvox maintainers <maintainers@lirvox.invalid>" CACHE STRING
  "Name and address of whoever makes the Debian packages")
set(library_package liblirvox${LIRVOX_SOVERSION})
string(TIMESTAMP LIRVOX_PACKAGE_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC)
set(generated "${PROJECT_BINARY_DIR}/debian")

# Each package has its own copy of what every package must bring.
function(lirvox_debian_package component package section description)
  string(TOUPPER ${component} name)
  set(CPACK_DEBIAN_${name}_PACKAGE_NAME ${package} PARENT_SCOPE)
  set(CPACK_DEBIAN_${name}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(CPACK_DEBIAN_${name}_DESCRIPTION "${description}" PARENT_SCOPE)
  set(folder "${CMAKE_INSTALL_DATAROOTDIR}/doc/${package}")
  set(LIRVOX_PACKAGE ${package})
  configure_file("${PROJECT_SOURCE_DIR}/cmake/debian/changelog.in"
    "${generated}/${package}/changelog" @ONLY)
  execute_process(COMMAND gzip -9nf "${generated}/${package}/changelog"
    COMMAND_ERROR_IS_FATAL ANY)
  install(FILES "${PROJECT_SOURCE_DIR}/cmake/debian/copyright"
    "${generated}/${package}/changelog.gz" DESTINATION ${folder} COMPONENT ${component})
endfunction()

lirvox_debian_package(library ${library_package} libs
  "Listens for a few seconds, or takes samples, and finds the track and the place
in it in a local database of landmark fingerprints. Nothing leaves the device.
.
This package contains the shared libraries for C++ and C.")
lirvox_debian_package(development liblirvox-dev libdevel
  "Listens for a few seconds, or takes samples, and finds the track and the place
in it in a local database of landmark fingerprints. Nothing leaves the device.
.
This package contains the headers for C++ and C, and examples.")
lirvox_debian_package(tools lirvox sound
  "Builds databases of landmark fingerprints from music files, and recognises
recordings and what is playing against them.")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/examples"
  DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/doc/liblirvox-dev" COMPONENT development)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "${LIRVOX_PACKAGE_MAINTAINER}")
set(CPACK_COMPONENTS_ALL library development tools)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/lib")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA "${PROJECT_SOURCE_DIR}/cmake/debian/triggers")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${library_package} (= ${PROJECT_VERSION})")
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
include(CPack)
