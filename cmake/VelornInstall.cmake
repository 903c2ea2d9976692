# `cmake --install`: the libraries, their headers, the program, and a package config for find_package(Velorn).
include(CMakePackageConfigHelpers)
set(package ${CMAKE_INSTALL_LIBDIR}/cmake/Velorn)

set_target_properties(velorn_platform PROPERTIES EXPORT_NAME platform)
set_target_properties(velorn_flight PROPERTIES EXPORT_NAME flight)
set_target_properties(velorn_host PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
set_target_properties(velorn velorn_flight PROPERTIES INSTALL_RPATH "$ORIGIN")
install(TARGETS velorn_platform velorn velorn_flight EXPORT VelornTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS velorn_host RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY include/velorn DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY platform DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/velorn-platform
  FILES_MATCHING PATTERN "*.h" PATTERN "strandel/hdf5" EXCLUDE)
install(EXPORT VelornTargets NAMESPACE Velorn:: DESTINATION ${package})

file(WRITE ${PROJECT_BINARY_DIR}/VelornConfig.cmake "include(\${CMAKE_CURRENT_LIST_DIR}/VelornTargets.cmake)\n")
write_basic_package_version_file(${PROJECT_BINARY_DIR}/VelornConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/VelornConfig.cmake ${PROJECT_BINARY_DIR}/VelornConfigVersion.cmake
  DESTINATION ${package})
