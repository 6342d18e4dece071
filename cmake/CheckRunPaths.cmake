# Fails when a program or library has a run path with an element that is neither absolute nor relative to its
# own folder: the loader takes an empty one for the current folder and would load a library from there.
#
# FOLDERS: where the binaries are. READELF: the tool.

set(checked 0)
foreach(folder IN LISTS FOLDERS)
  file(GLOB files "${folder}/*")
  foreach(file IN LISTS files)
    if(IS_DIRECTORY "${file}" OR IS_SYMLINK "${file}")
      continue()
    endif()
    execute_process(COMMAND "${READELF}" -d "${file}" OUTPUT_VARIABLE dynamic ERROR_QUIET)
    if(NOT dynamic MATCHES "(RPATH|RUNPATH)[^[]*\\[([^\n]*)\\]\n")
      continue()
    endif()
    math(EXPR checked "${checked} + 1")
    set(run_path "${CMAKE_MATCH_2}")
    if(NOT run_path MATCHES "^([$]ORIGIN|/)[^:]*(:([$]ORIGIN|/)[^:]*)*$")
      message(SEND_ERROR "${file} has the run path [${run_path}]")
    endif()
  endforeach()
endforeach()
if(checked EQUAL 0)
  message(FATAL_ERROR "No file with a run path in ${FOLDERS}")
endif()
message("${checked} run paths checked")
