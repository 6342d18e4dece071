# What tests/CMakeLists.txt needs to declare its tests, and the tests of the shared libraries themselves.

# hostutil_test(NAME [SOURCES...]): the test NAME_test.cpp.
function(hostutil_test name)
  add_executable(${name}_test ${name}_test.cpp ${ARGN})
  target_link_libraries(${name}_test PRIVATE hostutil_objects basic_objects test_support GTest::gtest_main)
  gtest_discover_tests(${name}_test DISCOVERY_MODE PRE_TEST)
endfunction()

# hostutil_program_test(NAME [SOURCES...]): the same for a test that runs the program.
function(hostutil_program_test name)
  hostutil_test(${name} ${ARGN})
  find_package(fmt REQUIRED)
  find_package(nlohmann_json REQUIRED)
  # With its emulator, when cross-compiled.
  list(JOIN CMAKE_CROSSCOMPILING_EMULATOR " " emulator)
  target_link_libraries(${name}_test PRIVATE fmt::fmt nlohmann_json::nlohmann_json)
  target_include_directories(${name}_test PRIVATE "${PROJECT_SOURCE_DIR}")
  target_compile_definitions(${name}_test PRIVATE HOSTUTIL_PROGRAM="${emulator} '$<TARGET_FILE:hostutil>'")
  add_dependencies(${name}_test hostutil)
endfunction()

# Linked with the shared libraries, by which it recognises their allocations. Replaces glibc's malloc, which a
# sanitizer replaces too.
if(NOT APPLE AND NOT HOSTUTIL_SANITIZE)
  add_executable(allocation_failure_test
    allocation_failure_test.cpp support/every_function.cpp)
  target_include_directories(allocation_failure_test PRIVATE "${CMAKE_CURRENT_SOURCE_DIR}")
  target_link_libraries(allocation_failure_test PRIVATE
    hostutil_compile HostUtil::HostUtil PkgConfig::HOSTUTIL_SQLITE glog::glog GTest::gtest_main)
  gtest_discover_tests(allocation_failure_test DISCOVERY_MODE PRE_TEST)
endif()

if(CMAKE_NM AND NOT APPLE AND NOT HOSTUTIL_SANITIZE)
  # The ABI exports a constructor and a destructor twice each, under one demangled name.
  add_test(NAME ExportedSymbols COMMAND sh -c
    "\"$1\" -D -C --defined-only \"$2\" | sed 's/^[0-9a-f]* . //; s/(.*//' | LC_ALL=C sort -u | diff - \"$3\""
    sh "${CMAKE_NM}" "$<TARGET_FILE:HostUtil>" "${PROJECT_SOURCE_DIR}/tests/exported_symbols.txt")
endif()

if(CMAKE_READELF AND NOT APPLE)
  add_test(NAME RunPaths COMMAND "${CMAKE_COMMAND}" "-DREADELF=${CMAKE_READELF}"
    "-DFOLDERS=$<TARGET_FILE_DIR:HostUtil>" -P "${PROJECT_SOURCE_DIR}/cmake/CheckRunPaths.cmake")
endif()
