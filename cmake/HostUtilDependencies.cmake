# The libraries that libHostUtil and the libBasic stand-in call, as imported targets.

find_package(PkgConfig REQUIRED)
pkg_check_modules(HOSTUTIL_PLIST REQUIRED IMPORTED_TARGET libplist-2.0)
pkg_check_modules(HOSTUTIL_SQLITE REQUIRED IMPORTED_TARGET sqlite3)
find_package(glog REQUIRED)
if(NOT HOSTUTIL_BASIC_LIBRARY)
  pkg_check_modules(HOSTUTIL_NETTLE REQUIRED IMPORTED_TARGET nettle)
endif()
if(NOT APPLE)
  pkg_check_modules(HOSTUTIL_UUID REQUIRED IMPORTED_TARGET uuid)
endif()
