# A shared library beside libwex that feature developers link: it takes the
# ABI version, exports only what its header declares (nothing of the
# archives it holds), and is installed with its header folder include/NAME/
# and a pkg-config file NAME.pc that requires wex.
function(wex_installed_library target name description)
  set_target_properties(${target} PROPERTIES VERSION ${WEX_SOVERSION}.0.0 SOVERSION ${WEX_SOVERSION}
                        CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON INSTALL_RPATH "$ORIGIN")
  target_include_directories(${target} PUBLIC $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/include>
                             $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  target_link_libraries(${target} PUBLIC wex wex_platform PRIVATE wex_warnings)
  target_link_options(${target} PRIVATE "LINKER:--no-undefined" "LINKER:--exclude-libs,ALL")
  install(TARGETS ${target} EXPORT wexTargets
          LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${WEX_COMPONENT_LIBRARY}
                  NAMELINK_COMPONENT ${WEX_COMPONENT_DEV})
  install(DIRECTORY include/${name} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT ${WEX_COMPONENT_DEV})
  set(WEX_PC_NAME ${name})
  set(WEX_PC_DESCRIPTION "${description}")
  set(WEX_PC_LIBRARY ${target})
  configure_file(${PROJECT_SOURCE_DIR}/cmake/wex-library.pc.in ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
          COMPONENT ${WEX_COMPONENT_DEV})
endfunction()
