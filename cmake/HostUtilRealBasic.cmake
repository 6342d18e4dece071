# HostUtil::Basic from HOSTUTIL_BASIC_LIBRARY, and the variables with which the installed package defines it
# again.

set(name "${CMAKE_SHARED_LIBRARY_PREFIX}Basic${CMAKE_SHARED_LIBRARY_SUFFIX}")
if(NOT EXISTS "${HOSTUTIL_BASIC_LIBRARY}" OR NOT HOSTUTIL_BASIC_LIBRARY MATCHES "/${name}$")
  message(FATAL_ERROR
    "HOSTUTIL_BASIC_LIBRARY must be the path of a file ${name}, not ${HOSTUTIL_BASIC_LIBRARY}")
endif()

# Without a SONAME the linker would record the library's path, so it is linked by name.
set(soname IMPORTED_NO_SONAME TRUE)
if(CMAKE_OBJDUMP AND NOT APPLE)
  execute_process(COMMAND "${CMAKE_OBJDUMP}" -p "${HOSTUTIL_BASIC_LIBRARY}"
                  OUTPUT_VARIABLE headers COMMAND_ERROR_IS_FATAL ANY)
  if(headers MATCHES "SONAME +([^ \n]+)")
    set(soname IMPORTED_SONAME "${CMAKE_MATCH_1}")
  endif()
endif()

# Programs of the build tree look for it in their own folder.
if(PROJECT_IS_TOP_LEVEL)
  file(COPY "${HOSTUTIL_BASIC_LIBRARY}" DESTINATION "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}" FOLLOW_SYMLINK_CHAIN)
endif()

add_library(HostUtil::Basic SHARED IMPORTED GLOBAL)
set_target_properties(HostUtil::Basic PROPERTIES IMPORTED_LOCATION "${HOSTUTIL_BASIC_LIBRARY}" ${soname})

set(HOSTUTIL_BASIC_LIBRARY_NAME "${name}" PARENT_SCOPE)
set(HOSTUTIL_BASIC_SONAME "${soname}" PARENT_SCOPE)
