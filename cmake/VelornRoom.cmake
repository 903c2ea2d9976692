# velorn_room(<folder> SOURCES <file>... USES <room or library>... TESTS <file>... TESTS_USE <room or library>...)
#
# Declares a room: an object library velorn_<folder> ('/' becomes '_') of the sources in <folder>, what it uses, and one
# test program per file of tests/<folder>, which CTest knows as <folder>/<file without ending>. The first folder is the
# floor. Tests link the objects of their room and of all rooms of its floor below it, and the shared libraries of the
# floors below; of a platform room, the shared platform alone. TESTS_USE adds to that.
function(velorn_room folder)
  cmake_parse_arguments(PARSE_ARGV 1 ROOM "" "" "SOURCES;USES;TESTS;TESTS_USE")
  string(REPLACE "/" "_" name "velorn_${folder}")
  string(REGEX MATCH "^[^/]+" floor ${folder})
  list(TRANSFORM ROOM_SOURCES PREPEND ${PROJECT_SOURCE_DIR}/${folder}/)
  add_library(${name} OBJECT ${ROOM_SOURCES})
  # HDF5, GeographicLib and the like stay inside their floors; only rooms are passed on.
  set(rooms ${ROOM_USES})
  list(FILTER rooms INCLUDE REGEX "^velorn_")
  set(libraries ${ROOM_USES})
  list(FILTER libraries EXCLUDE REGEX "^velorn_")
  set(below_platform "")
  set(below_adjustment velorn_platform)
  set(below_flight velorn velorn_platform)
  set(below_host velorn_flight velorn velorn_platform)
  if(floor MATCHES "^(flight|host)$")
    list(PREPEND rooms ${below_${floor}})
  endif()
  set(scope PRIVATE)
  if(floor STREQUAL "flight")  # headers of these rooms show Eigen and the like, to each other and to tests
    set(scope PUBLIC)
  endif()
  target_link_libraries(${name} PUBLIC ${rooms} PRIVATE velorn_options ${scope} ${libraries})
  set_property(GLOBAL APPEND PROPERTY VELORN_ROOMS_OF_${floor} ${name})

  set(objects "")
  if(NOT floor STREQUAL "platform")
    velorn_objects_of(objects ${ROOM_USES})
    list(PREPEND objects ${name})
    set_property(GLOBAL PROPERTY VELORN_OBJECTS_OF_${name} "${objects}")
  endif()
  if(VELORN_TESTS)
    velorn_objects_of(more ${ROOM_TESTS_USE})
    list(APPEND more ${objects})
    list(REMOVE_DUPLICATES more)
    list(FILTER ROOM_TESTS_USE EXCLUDE REGEX "^velorn_")
    foreach(file IN LISTS ROOM_TESTS)
      velorn_test(${folder} ${file} LINKS ${more} ${ROOM_TESTS_USE} ${below_${floor}} velorn_platform)
    endforeach()
  endif()
endfunction()

# velorn_objects_of(<variable> <room>...): the object libraries of these rooms and of all rooms of their floor below.
function(velorn_objects_of variable)
  set(objects "")
  foreach(room IN LISTS ARGN)
    get_property(below GLOBAL PROPERTY VELORN_OBJECTS_OF_${room})
    list(APPEND objects ${below})
  endforeach()
  list(REMOVE_DUPLICATES objects)
  set(${variable} "${objects}" PARENT_SCOPE)
endfunction()

# velorn_test(<folder> <file> LINKS <library>...): one test program of tests/<folder>, run by CTest in a folder of its own.
# Of rooms that VELORN_UNTESTED_ROOMS matches it is neither run nor built with the rest. With VELORN_TESTS_TOGETHER the
# files of a folder make one program, compiled in one go, which CTest asks for the tests of one file after the other.
function(velorn_test folder file)
  cmake_parse_arguments(PARSE_ARGV 2 TEST "" "" "LINKS")
  cmake_path(GET file STEM stem)
  velorn_test_program(target ${folder} ${stem})
  if(NOT TARGET ${target})
    add_executable(${target})
    set_target_properties(${target} PROPERTIES UNITY_BUILD ${VELORN_TESTS_TOGETHER} UNITY_BUILD_BATCH_SIZE 0
      VELORN_TESTS_TOGETHER ${VELORN_TESTS_TOGETHER})
    if(VELORN_SANITIZE)  # what it tests is compiled as ever; the tests themselves are built in half the time
      target_compile_options(${target} PRIVATE -O0)
    endif()
    if(VELORN_SANITIZE MATCHES "fuzzer")  # whose eyes are on the readers
      target_compile_options(${target} PRIVATE -fno-sanitize=fuzzer-no-link)
    endif()
  endif()
  target_sources(${target} PRIVATE ${PROJECT_SOURCE_DIR}/tests/${folder}/${file})
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
  set(only "")
  if(VELORN_TESTS_TOGETHER)
    set(only ${file})
  endif()
  add_test(NAME ${folder}/${stem} COMMAND ${target} ${only})
  set_tests_properties(${folder}/${stem} PROPERTIES TIMEOUT 900)
endfunction()

# velorn_test_program(<variable> <folder> <test>): the program that has the tests of <folder>/<test>.cpp.
function(velorn_test_program variable folder test)
  if(VELORN_TESTS_TOGETHER)
    set(test "tests")
  endif()
  string(REPLACE "/" "_" target "${folder}_${test}")
  set(${variable} ${target} PARENT_SCOPE)
endfunction()
