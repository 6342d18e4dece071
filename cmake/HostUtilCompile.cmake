# Compile options of every target: warnings as errors, hidden symbols, sanitizers on request, and a run path
# to the executable's own folder.

add_library(hostutil_compile INTERFACE)
target_compile_options(hostutil_compile INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wcast-align -Wcast-qual -Wformat=2
  -Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual -Wundef -Wunused -Wdouble-promotion
  -Wimplicit-fallthrough
  # False positives of an optimising GCC 12 for std::string concatenation.
  $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>)
target_include_directories(hostutil_compile INTERFACE "${PROJECT_SOURCE_DIR}/src")
# Broken preconditions of the standard library, such as an index out of range, abort. g++ 16 does this by
# itself in debug builds.
target_compile_definitions(hostutil_compile INTERFACE $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)

# Only here: another project may build this one with a compiler that has new warnings.
if(PROJECT_IS_TOP_LEVEL AND NOT DEFINED CMAKE_COMPILE_WARNING_AS_ERROR)
  set(CMAKE_COMPILE_WARNING_AS_ERROR ON)
endif()

if(HOSTUTIL_SANITIZE)
  target_compile_options(hostutil_compile INTERFACE
    -fsanitize=${HOSTUTIL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer
    $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)  # false positives in instrumented code
  target_link_options(hostutil_compile INTERFACE -fsanitize=${HOSTUTIL_SANITIZE})
endif()

set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_OBJCXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

if(APPLE)
  set(HOSTUTIL_ORIGIN "@executable_path")
  set(CMAKE_INSTALL_NAME_DIR "@rpath")
else()
  set(HOSTUTIL_ORIGIN "$ORIGIN")
endif()
# The build tree uses the installed run path. Otherwise CMake pads the build tree's with colons, and the
# loader takes the empty element between two colons for the current folder, which may be an untrusted backup.
set(CMAKE_BUILD_WITH_INSTALL_RPATH ON)
set(CMAKE_INSTALL_RPATH "${HOSTUTIL_ORIGIN}")
