# Installing: the command with all it runs on, for C++ developers the host's libraries with their headers, and both as
# Debian packages.

# The folders install the command's own parts; the default component of all that isn't told otherwise.
install(FILES docs/vornel.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES share/bash-completion/vornel DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR})

include(CMakePackageConfigHelpers)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/vornel)
set(header_dir ${CMAKE_INSTALL_INCLUDEDIR}/vornel)
foreach(library host headless)
  set_target_properties(vornel_${library} PROPERTIES EXPORT_NAME ${library})
  target_compile_features(vornel_${library} PUBLIC cxx_std_20)
  target_include_directories(vornel_${library} INTERFACE $<INSTALL_INTERFACE:${header_dir}>)
  install(DIRECTORY ${library} DESTINATION ${header_dir} COMPONENT dev FILES_MATCHING PATTERN *.h)
endforeach()
install(TARGETS vornel_host vornel_headless EXPORT vornel ARCHIVE COMPONENT dev)
install(EXPORT vornel NAMESPACE vornel:: FILE vornelTargets.cmake DESTINATION ${package_dir} COMPONENT dev)
configure_package_config_file(cmake/vornelConfig.cmake.in vornelConfig.cmake
  INSTALL_DESTINATION ${package_dir} PATH_VARS CMAKE_INSTALL_LIBDIR)
write_basic_package_version_file(vornelConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/vornelConfig.cmake ${CMAKE_BINARY_DIR}/vornelConfigVersion.cmake
  DESTINATION ${package_dir} COMPONENT dev)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VENDOR vornel)
set(CPACK_PACKAGE_CONTACT "The vornel developers <vornel@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "exporter of Orvo scenes to glTF 2.0")
set(CPACK_PACKAGE_DESCRIPTION " A headless host reads scene files and ordinary 3D files and runs the
 exporter's plug-in over them, by hand or unattended on a farm.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL Unspecified dev)
set(CPACK_COMPONENT_DEV_DESCRIPTION " The host surface and the headless host as C++ libraries, to build scenes in
 code and export them.")
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_UNSPECIFIED_PACKAGE_NAME vornel)
set(CPACK_DEBIAN_UNSPECIFIED_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_DEV_PACKAGE_NAME vornel-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "vornel (= ${PROJECT_VERSION}), libtsl-ordered-map-dev, libfmt-dev, libglu1-mesa-dev")
set(CPACK_DEBIAN_UNSPECIFIED_PACKAGE_SHLIBDEPS ON)
include(CPack)
