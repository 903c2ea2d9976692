# How every source of the house is compiled.
find_program(CCACHE ccache)
if(CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
endif()
if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release)
endif()

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

add_library(velorn_options INTERFACE)
target_compile_options(velorn_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(velorn_options INTERFACE -Wno-restrict)  # g++ 12 reports std::string + "text" (its PR105329)
endif()
# Of files that are compiled together, names of one's unnamed namespace stand above another's, and g++ takes those of tests
# for a header's.
target_compile_options(velorn_options INTERFACE
  $<$<OR:$<BOOL:${CMAKE_UNITY_BUILD}>,$<BOOL:$<TARGET_PROPERTY:VELORN_TESTS_TOGETHER>>>:-Wno-shadow>
  $<$<AND:$<CXX_COMPILER_ID:GNU>,$<BOOL:$<TARGET_PROPERTY:VELORN_TESTS_TOGETHER>>>:-Wno-subobject-linkage>)
if(VELORN_WARNINGS_AS_ERRORS)
  target_compile_options(velorn_options INTERFACE -Werror)
endif()
if(VELORN_SANITIZE)
  add_compile_options(-fsanitize=${VELORN_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${VELORN_SANITIZE})
  add_compile_definitions(VELORN_SANITIZED)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    add_compile_options(-Wno-maybe-uninitialized)  # sees ways through instrumented code that nothing takes
  endif()
endif()
target_include_directories(velorn_options INTERFACE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
