# Installs the three libraries, their headers, a CMake package and a pkg-config file.
include(CMakePackageConfigHelpers)

install(TARGETS Wm4Foundation zuSystem zuSceneGraph EXPORT zuSceneGraphTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

install(DIRECTORY ${PROJECT_SOURCE_DIR}/Wm4 ${PROJECT_SOURCE_DIR}/zuSystem ${PROJECT_SOURCE_DIR}/zuSceneGraph
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING PATTERN "*.h")

install(EXPORT zuSceneGraphTargets NAMESPACE zu::
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/zuSceneGraph)

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/zuSceneGraphConfig.cmake.in
  ${CMAKE_BINARY_DIR}/zuSceneGraphConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/zuSceneGraph)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/zuSceneGraphConfigVersion.cmake
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/zuSceneGraphConfig.cmake ${CMAKE_BINARY_DIR}/zuSceneGraphConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/zuSceneGraph)

# The .pc file finds its prefix from its own place, so that an installation made with
# `cmake --install build --prefix DIR` (or moved afterwards) points at DIR.
file(RELATIVE_PATH ZU_PKGCONFIG_TO_PREFIX "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
string(REGEX REPLACE "/$" "" ZU_PKGCONFIG_TO_PREFIX "${ZU_PKGCONFIG_TO_PREFIX}")
configure_file(${PROJECT_SOURCE_DIR}/cmake/zuSceneGraph.pc.in ${CMAKE_BINARY_DIR}/zuSceneGraph.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/zuSceneGraph.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
