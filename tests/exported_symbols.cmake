# Checks that libHostUtil (LIBRARY) exports exactly the functions named in NAMES, as the tool NM lists them.

execute_process(COMMAND "${NM}" -D -C --defined-only "${LIBRARY}" OUTPUT_VARIABLE listing COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^\n]+" lines "${listing}")
list(TRANSFORM lines REPLACE "^[0-9a-f]+ . ([^(]+).*$" "\\1")
list(SORT lines)
list(REMOVE_DUPLICATES lines)  # a constructor is exported twice

file(STRINGS "${NAMES}" names)
list(SORT names)
if(NOT lines STREQUAL names)
  message(FATAL_ERROR "exported:\n  ${lines}\nexpected:\n  ${names}")
endif()
