# How every target of this project is compiled: warnings as errors, hidden symbols, the sanitizers that were asked for,
# and a run path that finds the libraries beside the executable.

add_library(hostutil_compile INTERFACE)
target_compile_options(hostutil_compile INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wcast-align -Wcast-qual -Wformat=2
  -Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual -Wundef -Wunused -Wdouble-promotion
  -Wimplicit-fallthrough
  # GCC 12, optimising, warns of what it put together itself when texts are joined by "+".
  $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>)
target_include_directories(hostutil_compile INTERFACE "${PROJECT_SOURCE_DIR}/src")

# Not where another project builds this one, perhaps with a compiler that nobody here has seen.
if(PROJECT_IS_TOP_LEVEL AND NOT DEFINED CMAKE_COMPILE_WARNING_AS_ERROR)
  set(CMAKE_COMPILE_WARNING_AS_ERROR ON)
endif()

if(HOSTUTIL_SANITIZE)
  target_compile_options(hostutil_compile INTERFACE
    -fsanitize=${HOSTUTIL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer
    $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)  # what the sanitizers add hides initialisations from it
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
# Linked with the run path that is installed: CMake would reserve its room with colons in the build tree, and the loader
# takes the empty element between two colons for the current folder, which may be an untrusted backup.
set(CMAKE_BUILD_WITH_INSTALL_RPATH ON)
set(CMAKE_INSTALL_RPATH "${HOSTUTIL_ORIGIN}")
