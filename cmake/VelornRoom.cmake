# velorn_room(<folder> SOURCES <file>... USES <room or library>... TESTS <file>...)
#
# Declares a room: an object library velorn_<folder> ('/' becomes '_') of the sources in <folder>, what it uses,
# and one test program per file of tests/<folder>, which CTest knows as <folder>/<file without ending>.
# Tests of platform rooms link the shared platform; tests of the library's rooms link the objects of their room
# and of all rooms below it, and the shared platform, never the shared library.
function(velorn_room folder)
  cmake_parse_arguments(PARSE_ARGV 1 ROOM "" "" "SOURCES;USES;TESTS")
  string(REPLACE "/" "_" name "velorn_${folder}")
  list(TRANSFORM ROOM_SOURCES PREPEND ${PROJECT_SOURCE_DIR}/${folder}/)
  add_library(${name} OBJECT ${ROOM_SOURCES})
  # HDF5, GeographicLib and the like stay inside; only rooms are passed on.
  set(rooms ${ROOM_USES})
  list(FILTER rooms INCLUDE REGEX "^velorn_")
  set(libraries ${ROOM_USES})
  list(FILTER libraries EXCLUDE REGEX "^velorn_")
  target_link_libraries(${name} PUBLIC ${rooms} PRIVATE velorn_options ${libraries})

  set(objects "")
  if(folder MATCHES "^platform/")
    set_property(GLOBAL APPEND PROPERTY VELORN_PLATFORM_ROOMS ${name})
  else()
    set(objects ${name})
    foreach(used IN LISTS ROOM_USES)
      get_property(below GLOBAL PROPERTY VELORN_OBJECTS_OF_${used})
      list(APPEND objects ${below})
    endforeach()
    list(REMOVE_DUPLICATES objects)
    set_property(GLOBAL PROPERTY VELORN_OBJECTS_OF_${name} "${objects}")
    set_property(GLOBAL APPEND PROPERTY VELORN_ROOMS ${name})
  endif()

  if(VELORN_TESTS)
    foreach(file IN LISTS ROOM_TESTS)
      velorn_test(${folder} ${file} LINKS ${objects} velorn_platform)
    endforeach()
  endif()
endfunction()

# velorn_host_room(<folder> SOURCES <file>... USES <target>... TESTS <file>...)
#
# The same for a part of the program in host/: its tests link its objects, those of the parts it uses, and the two shared
# libraries, as the program does. A part passes on what it uses.
function(velorn_host_room folder)
  cmake_parse_arguments(PARSE_ARGV 1 ROOM "" "" "SOURCES;USES;TESTS")
  string(REPLACE "/" "_" name "velorn_${folder}")
  list(TRANSFORM ROOM_SOURCES PREPEND ${PROJECT_SOURCE_DIR}/${folder}/)
  add_library(${name} OBJECT ${ROOM_SOURCES})
  target_link_libraries(${name} PUBLIC velorn velorn_platform ${ROOM_USES} PRIVATE velorn_options)
  set(parts ${name})
  foreach(used IN LISTS ROOM_USES)
    get_property(below GLOBAL PROPERTY VELORN_OBJECTS_OF_${used})
    list(APPEND parts ${below})
  endforeach()
  list(REMOVE_DUPLICATES parts)
  set_property(GLOBAL PROPERTY VELORN_OBJECTS_OF_${name} "${parts}")
  if(VELORN_TESTS)
    foreach(file IN LISTS ROOM_TESTS)
      velorn_test(${folder} ${file} LINKS ${parts} velorn velorn_platform)
    endforeach()
  endif()
endfunction()

# velorn_test(<folder> <file> LINKS <library>...): one test program of tests/<folder>, run by CTest in a folder of its own.
# Of rooms that VELORN_UNTESTED_ROOMS matches it is neither run nor built with the rest.
function(velorn_test folder file)
  cmake_parse_arguments(PARSE_ARGV 2 TEST "" "" "LINKS")
  cmake_path(GET file STEM stem)
  string(REPLACE "/" "_" target "${folder}_${stem}")
  add_executable(${target} ${PROJECT_SOURCE_DIR}/tests/${folder}/${file})
  set_target_properties(${target} PROPERTIES UNITY_BUILD OFF)
  target_link_libraries(${target} PRIVATE velorn_options velorn_test_support ${TEST_LINKS})
  if(CMAKE_BUILD_TYPE STREQUAL "Release")  # what it tests is compiled as ever; the tests themselves are built sooner
    target_compile_options(${target} PRIVATE -O1)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
      target_compile_options(${target} PRIVATE -Wno-maybe-uninitialized)  # of std::regex, without -O2
    endif()
  endif()
  if(VELORN_UNTESTED_ROOMS AND folder MATCHES "${VELORN_UNTESTED_ROOMS}")
    set_target_properties(${target} PROPERTIES EXCLUDE_FROM_ALL ON)
    return()
  endif()
  add_test(NAME ${folder}/${stem} COMMAND ${target})
  set_tests_properties(${folder}/${stem} PROPERTIES TIMEOUT 900)
endfunction()
