# PkgConfig::HOSTUTIL_PLIST: libplist, with macros for what the installed release offers.

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
