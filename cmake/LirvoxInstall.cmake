# Installation: the library, its public headers, the CMake package and the pkg-config file.

include(CMakePackageConfigHelpers)

install(TARGETS lirvox
  EXPORT LirvoxTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/lirvox)
