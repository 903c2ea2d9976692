# The three shared libraries, one per floor. All hide what is not exported; there is one copy of each per process.
function(velorn_library name floor)
  cmake_parse_arguments(PARSE_ARGV 2 LIBRARY "" "INCLUDES;INSTALLED" "USES")
  get_property(rooms GLOBAL PROPERTY VELORN_ROOMS_OF_${floor})
  add_library(${name} SHARED)
  target_link_libraries(${name} PRIVATE ${rooms} PUBLIC ${LIBRARY_USES})
  target_include_directories(${name} INTERFACE
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/${LIBRARY_INCLUDES}> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/${LIBRARY_INSTALLED}>)
  target_compile_features(${name} INTERFACE cxx_std_20)
  set_target_properties(${name} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} LINKER_LANGUAGE CXX)
  if(VELORN_SANITIZE)  # the sanitizers' runtime is in the program, not in the library
    set_target_properties(${name} PROPERTIES LINK_FLAGS "-Wl,--as-needed")
  else()
    set_target_properties(${name} PROPERTIES LINK_FLAGS "-Wl,--no-undefined,--as-needed")
  endif()
endfunction()
