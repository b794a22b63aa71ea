# The Debian package: what ./run install installs, without the libraries for other programs, below /usr.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vintrel)
set(CPACK_PACKAGE_CONTACT "Vintrel maintainers <maintainers@vintrel.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "falling snow for pictures and video")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "A tool that draws a field of falling flakes with depth, wind and motion blur on
pictures, numbered sequences and video, with the same effect as a filter and
a source for frei0r, as a bundle for OpenFX, and as a page for browsers.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_COMPONENTS_ALL Unspecified openfx package)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ALL_COMPONENTS_IN_ONE)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
                                                WORLD_READ WORLD_EXECUTE)

# What a package has and an install has not.
set(DOCUMENTS ${CMAKE_INSTALL_DATADIR}/doc/vintrel)
install(FILES ${CMAKE_CURRENT_LIST_DIR}/copyright ${CMAKE_CURRENT_LIST_DIR}/changelog DESTINATION ${DOCUMENTS}
        COMPONENT package EXCLUDE_FROM_ALL)
install(FILES CHANGELOG.md DESTINATION ${DOCUMENTS} RENAME NEWS.md COMPONENT package EXCLUDE_FROM_ALL)
install(FILES ${CMAKE_CURRENT_LIST_DIR}/overrides DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides
        RENAME vintrel COMPONENT package EXCLUDE_FROM_ALL)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/compress.cmake)
include(CPack)
