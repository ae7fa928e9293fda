# Installation: the libraries, their public headers, the CMake package and the pkg-config files.

include(CMakePackageConfigHelpers)

set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/Lirvox")
set(generated "${PROJECT_BINARY_DIR}/package")

set(libraries lirvox)
if(LIRVOX_BUILD_C)
  list(APPEND libraries lirvox_c)
  if(BUILD_SHARED_LIBS)
    set_target_properties(lirvox_c PROPERTIES INSTALL_RPATH "$ORIGIN")
  endif()
endif()
install(TARGETS ${libraries} EXPORT LirvoxTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
  FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/lirvox COMPONENT development)
install(EXPORT LirvoxTargets NAMESPACE Lirvox:: DESTINATION ${package_folder}
  COMPONENT development)

configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/LirvoxConfig.cmake.in"
  "${generated}/LirvoxConfig.cmake" INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file("${generated}/LirvoxConfigVersion.cmake"
  COMPATIBILITY SameMinorVersion)
install(FILES "${generated}/LirvoxConfig.cmake" "${generated}/LirvoxConfigVersion.cmake"
  DESTINATION ${package_folder} COMPONENT development)

# Relative to the file itself, so that the whole tree may be installed or moved anywhere.
set(pkgconfig_folder "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX
  BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}/${pkgconfig_folder}" OUTPUT_VARIABLE LIRVOX_PC_PREFIX)
# A static library hands on what it links. Not as "private": --static would ask for static
# libraries of what those link in their turn.
if(NOT BUILD_SHARED_LIBS)
  set(LIRVOX_PC_CFLAGS " -DLIRVOX_STATIC")
  set(LIRVOX_PC_LIBS " -pthread")
  set(LIRVOX_PC_REQUIRES "libcurl minizip soxr sqlite3 zlib")
  if(LIRVOX_WITH_PULSE)
    string(APPEND LIRVOX_PC_REQUIRES " libpulse")
  endif()
endif()
configure_file("${PROJECT_SOURCE_DIR}/cmake/lirvox.pc.in" "${generated}/lirvox.pc" @ONLY)
install(FILES "${generated}/lirvox.pc" DESTINATION ${pkgconfig_folder} COMPONENT development)
if(LIRVOX_BUILD_C)
  configure_file("${PROJECT_SOURCE_DIR}/cmake/lirvox-c.pc.in" "${generated}/lirvox-c.pc" @ONLY)
  install(FILES "${generated}/lirvox-c.pc" DESTINATION ${pkgconfig_folder} COMPONENT development)
endif()
