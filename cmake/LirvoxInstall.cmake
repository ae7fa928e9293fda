# Installation: the library, its public headers, the CMake package and the pkg-config file.

include(CMakePackageConfigHelpers)

set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/Lirvox")
set(generated "${PROJECT_BINARY_DIR}/package")

install(TARGETS lirvox EXPORT LirvoxTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/lirvox)
install(EXPORT LirvoxTargets NAMESPACE Lirvox:: DESTINATION ${package_folder})

configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/LirvoxConfig.cmake.in"
  "${generated}/LirvoxConfig.cmake" INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file("${generated}/LirvoxConfigVersion.cmake"
  COMPATIBILITY SameMinorVersion)
install(FILES "${generated}/LirvoxConfig.cmake" "${generated}/LirvoxConfigVersion.cmake"
  DESTINATION ${package_folder})

if(NOT BUILD_SHARED_LIBS)
  set(LIRVOX_PC_CFLAGS " -DLIRVOX_STATIC")
endif()
if(LIRVOX_WITH_PULSE)
  set(LIRVOX_PC_PULSE "libpulse ")
endif()
configure_file("${PROJECT_SOURCE_DIR}/cmake/lirvox.pc.in" "${generated}/lirvox.pc" @ONLY)
install(FILES "${generated}/lirvox.pc" DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
