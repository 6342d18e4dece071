# Imported targets for the libraries that libHostUtil and the libBasic stand-in call.

find_package(PkgConfig REQUIRED)
pkg_check_modules(HOSTUTIL_PLIST REQUIRED IMPORTED_TARGET libplist-2.0>=2.2.0)
# What later releases add: plist_mem_free (2.3.0) in place of plist_to_xml_free, and dates since 1970 (2.7.0).
include(CheckCXXSymbolExists)
include(CMakePushCheckState)
cmake_push_check_state(RESET)
set(CMAKE_REQUIRED_LIBRARIES PkgConfig::HOSTUTIL_PLIST)
# The results are those of one release: look again when another one is found.
set(has "HOSTUTIL_PLIST_${HOSTUTIL_PLIST_VERSION}_HAS")
check_cxx_symbol_exists(plist_mem_free plist/plist.h ${has}_MEM_FREE)
check_cxx_symbol_exists(plist_get_unix_date_val plist/plist.h ${has}_UNIX_DATE)
target_compile_definitions(PkgConfig::HOSTUTIL_PLIST INTERFACE
  $<$<BOOL:${${has}_MEM_FREE}>:HOSTUTIL_PLIST_HAS_MEM_FREE>
  $<$<BOOL:${${has}_UNIX_DATE}>:HOSTUTIL_PLIST_HAS_UNIX_DATE>)
cmake_pop_check_state()
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
