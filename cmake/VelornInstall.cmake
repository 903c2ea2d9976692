# `cmake --install`: the libraries, their headers, the program, and a package config for find_package(Velorn).
include(CMakePackageConfigHelpers)
set(package ${CMAKE_INSTALL_LIBDIR}/cmake/Velorn)

set_target_properties(velorn_platform PROPERTIES EXPORT_NAME platform)
set_target_properties(velorn_flight PROPERTIES EXPORT_NAME flight)
set_target_properties(velorn_host PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
set_target_properties(velorn velorn_flight PROPERTIES INSTALL_RPATH "$ORIGIN")
install(TARGETS velorn_platform velorn velorn_flight EXPORT VelornTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS velorn_host RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

# What shells and `man` know of the program, it says itself.
if(NOT VELORN_SANITIZE AND NOT CMAKE_CROSSCOMPILING)
  set(told "")
  # velorn_told(<file> <folder> <argument>...): what the program prints with these arguments, installed into the folder.
  function(velorn_told file folder)
    set(output ${PROJECT_BINARY_DIR}/told/${file})
    add_custom_command(OUTPUT ${output} COMMAND velorn_host ${ARGN} > ${output} DEPENDS velorn_host VERBATIM)
    install(FILES ${output} DESTINATION ${folder})
    set(told ${told} ${output} PARENT_SCOPE)
  endfunction()
  file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/told)
  velorn_told(velorn ${CMAKE_INSTALL_DATADIR}/bash-completion/completions completion bash)
  velorn_told(_velorn ${CMAKE_INSTALL_DATADIR}/zsh/site-functions completion zsh)
  velorn_told(velorn.1 ${CMAKE_INSTALL_MANDIR}/man1 manpage)
  add_custom_target(velorn_told ALL DEPENDS ${told})
endif()

install(DIRECTORY include/velorn DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY platform DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/velorn-platform
  FILES_MATCHING PATTERN "*.h" PATTERN "strandel/hdf5" EXCLUDE)
install(EXPORT VelornTargets NAMESPACE Velorn:: DESTINATION ${package})

file(WRITE ${PROJECT_BINARY_DIR}/VelornConfig.cmake "include(\${CMAKE_CURRENT_LIST_DIR}/VelornTargets.cmake)\n")
write_basic_package_version_file(${PROJECT_BINARY_DIR}/VelornConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/VelornConfig.cmake ${PROJECT_BINARY_DIR}/VelornConfigVersion.cmake
  DESTINATION ${package})
