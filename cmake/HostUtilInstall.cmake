# Installing and packaging: libraries, public headers, CMake package, pkg-config file, .deb. The installation
# is relocatable.

include(CMakePackageConfigHelpers)

set(cmake_folder "${CMAKE_INSTALL_LIBDIR}/cmake/HostUtil")
set(pkgconfig_folder "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

install(TARGETS HostUtil EXPORT HostUtilTargets
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
        INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/hostutil"  # for consumers with CMake before 3.23
        FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/hostutil")
if(HOSTUTIL_BASIC_LIBRARY)
  # A copy inside the prefix, so that the installation stays relocatable.
  install(CODE "file(INSTALL \"${HOSTUTIL_BASIC_LIBRARY}\" TYPE SHARED_LIBRARY FOLLOW_SYMLINK_CHAIN
    DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}\")")
else()
  install(TARGETS Basic EXPORT HostUtilTargets LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}")
endif()

install(EXPORT HostUtilTargets NAMESPACE HostUtil:: DESTINATION "${cmake_folder}")
configure_package_config_file(cmake/HostUtilConfig.cmake.in "${PROJECT_BINARY_DIR}/HostUtilConfig.cmake"
                              INSTALL_DESTINATION "${cmake_folder}" PATH_VARS CMAKE_INSTALL_LIBDIR
                              NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/HostUtilConfigVersion.cmake"
                                 COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/HostUtilConfig.cmake" "${PROJECT_BINARY_DIR}/HostUtilConfigVersion.cmake"
        DESTINATION "${cmake_folder}")

string(REGEX REPLACE "[^/]+" ".." HOSTUTIL_PREFIX_FROM_PC "${pkgconfig_folder}")
configure_file(cmake/hostutil.pc.in "${PROJECT_BINARY_DIR}/hostutil.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/hostutil.pc" DESTINATION "${pkgconfig_folder}")

install(FILES LICENSE DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/doc/hostutil" RENAME copyright)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME hostutil)
set(CPACK_PACKAGE_CONTACT "The HostUtil developers <hostutil@localhost>")
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS libplist-dev)  # the headers include its own
include(CPack)
