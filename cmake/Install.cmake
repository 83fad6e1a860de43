# What `cmake --install` puts where: the library, its headers below include/palvex as they lie in the
# source tree, a CMake package and a pkg-config file, and the terminal program if it was built. With
# `--component library`, `development` or `program` only that part.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/palvex)

install(TARGETS palvex EXPORT palvex
        LIBRARY COMPONENT library NAMELINK_COMPONENT development
        ARCHIVE COMPONENT development
        RUNTIME COMPONENT library)
set(headers runtime numerics families laws engine)
if(TARGET palvex_simulation)
  list(APPEND headers simulation)
  install(TARGETS palvex_simulation EXPORT palvexSimulation
          LIBRARY COMPONENT library NAMELINK_COMPONENT development
          ARCHIVE COMPONENT development
          RUNTIME COMPONENT library)
  install(EXPORT palvexSimulation NAMESPACE palvex:: FILE palvexSimulationTargets.cmake
          DESTINATION ${package_dir} COMPONENT development)
endif()
install(DIRECTORY ${headers}
        COMPONENT development
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/palvex
        FILES_MATCHING PATTERN "*.h")
install(DIRECTORY palvex/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/palvex COMPONENT development
        FILES_MATCHING PATTERN "*.h")
install(EXPORT palvex NAMESPACE palvex:: FILE palvexTargets.cmake DESTINATION ${package_dir}
        COMPONENT development)
configure_file(cmake/palvexConfig.cmake.in palvexConfig.cmake @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/palvexConfig.cmake DESTINATION ${package_dir}
        COMPONENT development)

# Before version 1 a new minor version may change the interface.
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/palvexConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/palvexConfigVersion.cmake DESTINATION ${package_dir}
        COMPONENT development)

# The pkg-config file finds the prefix from its own place, so that an install can be moved.
file(RELATIVE_PATH prefix_from_pkgconfig /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" prefix_from_pkgconfig ${prefix_from_pkgconfig})
configure_file(cmake/palvex.pc.in palvex.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/palvex.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
        COMPONENT development)

if(PALVEX_BUILD_TERMINAL)
  install(TARGETS palvex_terminal COMPONENT program)
endif()
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/palvex COMPONENT program)
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libpalvex-dev COMPONENT development)

include(Package)
