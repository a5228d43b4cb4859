# Debian packages with CPack ("cpack -G DEB" in the build folder), split as
# Debian splits a library: the shared libraries, what a developer builds
# with, and the programs with their manual pages, completion and sample
# grammars.
set(CPACK_PACKAGE_NAME wex)
set(CPACK_PACKAGE_VENDOR "The wex project")
set(CPACK_PACKAGE_CONTACT "wex maintainers <wex@localhost>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_COMPONENTS_ALL ${WEX_COMPONENT_LIBRARY} ${WEX_COMPONENT_DEV})
if(WEX_BUILD_TOOLS)
  list(APPEND CPACK_COMPONENTS_ALL ${WEX_COMPONENT_TOOLS})
endif()

# One component's package: its section, what it depends on, its summary and
# the line that describes it.
function(wex_debian_package component section depends summary description)
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${component} PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${depends}" PARENT_SCOPE)
  set(CPACK_COMPONENT_${upper}_DESCRIPTION "${summary}\n ${description}" PARENT_SCOPE)
endfunction()

set(same_library "${WEX_COMPONENT_LIBRARY} (= ${PROJECT_VERSION})")
# The platform stand-ins call liburiparser.
wex_debian_package(${WEX_COMPONENT_LIBRARY} libs "libc6, libstdc++6, liburiparser1"
                   "support library of the wex switch shell" "The shared libwex and the platform stand-ins it calls.")
wex_debian_package(${WEX_COMPONENT_DEV} libdevel "${same_library}" "development files of libwex"
                   "Headers, static libraries, the pkg-config file and the CMake package.")
wex_debian_package(${WEX_COMPONENT_TOOLS} admin "${same_library}, libedit2"
                   "the wex shell, wexd-sim, wexctl and the sample features"
                   "With their manual pages, bash completion and the sample grammars.")
include(CPack)
