# The two shared libraries. Both hide what is not exported; there is one copy of the platform per process.
get_property(platform_rooms GLOBAL PROPERTY VELORN_PLATFORM_ROOMS)
add_library(velorn_platform SHARED)
target_link_libraries(velorn_platform PRIVATE ${platform_rooms})
target_include_directories(velorn_platform INTERFACE
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/velorn-platform>)

get_property(rooms GLOBAL PROPERTY VELORN_ROOMS)
add_library(velorn SHARED)
target_link_libraries(velorn PRIVATE ${rooms} PUBLIC velorn_platform)
target_include_directories(velorn INTERFACE
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)

foreach(library velorn_platform velorn)
  target_compile_features(${library} INTERFACE cxx_std_20)
  set_target_properties(${library} PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} LINKER_LANGUAGE CXX LINK_FLAGS "-Wl,--no-undefined,--as-needed")
endforeach()
if(VELORN_SANITIZE)
  # The sanitizers' runtime is in the program, not in the library.
  set_target_properties(velorn_platform velorn PROPERTIES LINK_FLAGS "-Wl,--as-needed")
endif()
add_library(Velorn::platform ALIAS velorn_platform)
add_library(Velorn::velorn ALIAS velorn)
