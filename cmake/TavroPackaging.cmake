# What a host developer installs: the package files for CMake and
# pkg-config, the documentation with the example host, and a Debian package
# of the whole installation.
include(CMakePackageConfigHelpers)

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/TavroConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/TavroConfig.cmake
  INSTALL_DESTINATION ${TAVRO_INSTALL_CMAKEDIR}
  PATH_VARS CMAKE_INSTALL_INCLUDEDIR TAVRO_INSTALL_PLUGINDIR TAVRO_INSTALL_PRODUCERDIR)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/TavroConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/TavroConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/TavroConfigVersion.cmake
        DESTINATION ${TAVRO_INSTALL_CMAKEDIR})

# The .pc file finds its prefix from its own place, so that a staged or
# moved installation answers its own paths.
file(RELATIVE_PATH TAVRO_PC_PREFIX_FROM_PCFILEDIR
     /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
string(REGEX REPLACE "/$" "" TAVRO_PC_PREFIX_FROM_PCFILEDIR "${TAVRO_PC_PREFIX_FROM_PCFILEDIR}")
set(TAVRO_PC_LIBS "")
foreach(library IN LISTS CMAKE_DL_LIBS)
  string(APPEND TAVRO_PC_LIBS " -l${library}")
endforeach()
configure_file(${PROJECT_SOURCE_DIR}/tavro.pc.in ${CMAKE_CURRENT_BINARY_DIR}/tavro.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tavro.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(FILES README.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES examples/grab_one.c examples/CMakeLists.txt examples/Makefile
        DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)

set(CPACK_GENERATOR DEB)
# One package per component: tavro (the plug-in, the simulator, the host) and,
# with the library over Aravis built, tavro-aravis.
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL tavro)
set(CPACK_DEBIAN_TAVRO_PACKAGE_NAME tavro)
if(TAVRO_BUILD_ARAVIS)
  list(APPEND CPACK_COMPONENTS_ALL aravis)
  set(CPACK_DEBIAN_ARAVIS_PACKAGE_NAME tavro-aravis)
  set(CPACK_DEBIAN_ARAVIS_PACKAGE_DEPENDS
      "tavro (= ${PROJECT_VERSION}), libaravis-0.8-0 (>= 0.8.26), libc6 (>= 2.34), libstdc++6 (>= 12)")
  set(CPACK_DEBIAN_ARAVIS_PACKAGE_CONTROL_EXTRA "${TAVRO_ARAVIS_PACKAGE_SCRIPTS}")
  set(CPACK_DEBIAN_ARAVIS_PACKAGE_SECTION libs)
  set(CPACK_COMPONENT_ARAVIS_DESCRIPTION
      "Real GenICam cameras for Tavro through Aravis\nInstalled, the Tavro plug-in loads its Oxel camera library built on Aravis 0.8 (USB3 Vision, GigE Vision) instead of the simulated cameras; removed, the simulated cameras are back. Aravis is LGPL-2.1-or-later; see /usr/share/doc/tavro-aravis/copyright.")
endif()
set(CPACK_PACKAGE_NAME tavro)
set(CPACK_PACKAGE_VENDOR "Tavro")
set(CPACK_PACKAGE_CONTACT "Tavro developers <tavro@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
    "Camera acquisition plug-in for machine-vision hosts, with simulated cameras")
set(CPACK_COMPONENT_TAVRO_DESCRIPTION
    "Camera acquisition plug-in for machine-vision hosts, with simulated cameras\nlibtavro.so loads into a host and delivers images from GenICam cameras through the Oxel camera library; this package bundles a simulated Oxel library with three cameras, the reference host tavro-host, the host header and an example host.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_TAVRO_PACKAGE_DEPENDS "libc6 (>= 2.34), libstdc++6 (>= 12), libgcc-s1, libpng16-16")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "pkg-config, cmake")
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/package)
include(CPack)
