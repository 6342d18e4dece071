# Imported targets for the libraries that libHostUtil and the libBasic stand-in call.

include(HostUtilPlist)
pkg_check_modules(HOSTUTIL_SQLITE REQUIRED IMPORTED_TARGET sqlite3)
find_package(glog QUIET)
if(NOT TARGET glog::glog)
  # glog's CMake package requires the headers of one unwinder, which conflict with those of another; linking a
  # shared glog needs neither.
  find_path(HOSTUTIL_GLOG_HEADERS glog/logging.h REQUIRED)
  find_library(HOSTUTIL_GLOG_LIBRARY glog REQUIRED)
  add_library(glog::glog UNKNOWN IMPORTED)
  set_target_properties(glog::glog PROPERTIES
    IMPORTED_LOCATION "${HOSTUTIL_GLOG_LIBRARY}" INTERFACE_INCLUDE_DIRECTORIES "${HOSTUTIL_GLOG_HEADERS}"
    INTERFACE_COMPILE_DEFINITIONS GLOG_USE_GLOG_EXPORT)
endif()
if(NOT HOSTUTIL_BASIC_LIBRARY)
  pkg_check_modules(HOSTUTIL_NETTLE REQUIRED IMPORTED_TARGET nettle)
endif()
if(NOT APPLE)
  pkg_check_modules(HOSTUTIL_UUID REQUIRED IMPORTED_TARGET uuid)
endif()
