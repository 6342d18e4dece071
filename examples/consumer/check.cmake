# Builds and runs the minimal host with every supported way to find HostUtil: in a moved installation by CMake
# and by pkg-config, and from the sources.
#
# BUILD: the build folder to install. SOURCE: the project. WORK: a scratch folder. GENERATOR, CXX, PKG_CONFIG,
# READELF: the tools.

file(REMOVE_RECURSE "${WORK}")
file(WRITE "${WORK}/Info.plist"
     "<plist version=\"1.0\"><dict><key>Device Name</key><string>Phone</string></dict></plist>")

function(run)
  execute_process(COMMAND ${ARGN} WORKING_DIRECTORY "${WORK}" RESULT_VARIABLE result
                  OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${ARGN}: ${result}\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

function(run_host program)
  run("${program}" ./Info.plist)
  foreach(text "Info.plist is a property list" "<string>Phone</string>" "Files.fileID found"
          "\n./4c/4c936ec5e49eb87cae13d3d20531f0618e04222e\n")
    string(FIND "${output}" "${text}" found)
    if(found EQUAL -1)
      message(FATAL_ERROR "${program} does not print \"${text}\" but:\n${output}")
    endif()
  endforeach()
endfunction()

function(build folder source)
  run("${CMAKE_COMMAND}" -S "${source}" -B "${folder}" -G "${GENERATOR}" "-DCMAKE_CXX_COMPILER=${CXX}"
      ${ARGN})
  run("${CMAKE_COMMAND}" --build "${folder}" --parallel 2)
endfunction()

function(check_run_paths)
  if(READELF)
    run("${CMAKE_COMMAND}" "-DREADELF=${READELF}" "-DFOLDERS=${ARGN}"
        -P "${SOURCE}/cmake/CheckRunPaths.cmake")
  endif()
endfunction()

run("${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${WORK}/installed")
file(RENAME "${WORK}/installed" "${WORK}/moved")
if(EXISTS "${WORK}/moved/bin/hostutil")
  run("${WORK}/moved/bin/hostutil" --version)
endif()
file(GLOB_RECURSE libraries "${WORK}/moved/*/libHostUtil*")
list(GET libraries 0 library)
get_filename_component(library_folder "${library}" DIRECTORY)
check_run_paths("${WORK}/moved/bin" "${library_folder}")
set(consumer "${SOURCE}/examples/consumer")
build(installed_consumer "${consumer}" -DWAY=find_package "-DCMAKE_PREFIX_PATH=${WORK}/moved")
run_host("${WORK}/installed_consumer/consumer")

file(GLOB_RECURSE pc_file "${WORK}/moved/*/hostutil.pc")
get_filename_component(pc_folder "${pc_file}" DIRECTORY)
set(ENV{PKG_CONFIG_PATH} "${pc_folder}:$ENV{PKG_CONFIG_PATH}")
run("${PKG_CONFIG}" --cflags --libs hostutil sqlite3)
separate_arguments(flags UNIX_COMMAND "${output}")
run("${CXX}" -std=c++17 "${SOURCE}/examples/minimal_host/main.cpp" -o pkg_config_consumer
    ${flags} "-Wl,-rpath,${library_folder}")
run_host("${WORK}/pkg_config_consumer")

build(minimal_host "${SOURCE}/examples/minimal_host" "-DCMAKE_PREFIX_PATH=${WORK}/moved")
file(RENAME "${WORK}/moved" "${WORK}/gone")  # only the copies in the executable's folder are left
run_host("${WORK}/minimal_host/minimal_host")
check_run_paths("${WORK}/minimal_host")

# One build folder for both, so that the second way compiles nothing.
foreach(way add_subdirectory FetchContent)
  build(source_consumer "${consumer}" -DWAY=${way})
  run_host("${WORK}/source_consumer/consumer")
endforeach()
