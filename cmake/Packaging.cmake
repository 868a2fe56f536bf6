# Installing the program, and the Debian package of it: cpack -G DEB --config BUILD/CPackConfig.cmake
include(GNUInstallDirs)
install(TARGETS corvatto RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
if(NOT CORVATTO_ONE_BINARY)
    set(private_dir ${CMAKE_INSTALL_LIBDIR}/corvatto)
    install(TARGETS corvatto_program corvatto-fetch
        LIBRARY DESTINATION ${private_dir} RUNTIME DESTINATION ${private_dir})
endif()

# The changelog says which revision of the package this is. It and the metainfo must know this version of the program.
file(STRINGS ${PROJECT_SOURCE_DIR}/resources/debian/changelog newest_entry LIMIT_COUNT 1)
if(NOT newest_entry MATCHES "^corvatto \\(([0-9.]+)-([0-9]+)\\)" OR NOT CMAKE_MATCH_1 STREQUAL PROJECT_VERSION)
    message(FATAL_ERROR "resources/debian/changelog does not begin with version ${PROJECT_VERSION}: ${newest_entry}")
endif()
set(CPACK_DEBIAN_PACKAGE_RELEASE ${CMAKE_MATCH_2})
file(STRINGS ${PROJECT_SOURCE_DIR}/resources/app.corvatto.Corvatto.metainfo.xml this_release
    REGEX "<release version=\"${PROJECT_VERSION}\"")
if(NOT this_release)
    message(FATAL_ERROR "The metainfo in resources/ has no release ${PROJECT_VERSION}")
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME corvatto)
set(CPACK_PACKAGE_CONTACT "The Corvatto developers <feedback@corvatto.app>")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/package)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "clipboard history on a shelf of cards")
set(CPACK_PACKAGE_DESCRIPTION
"Corvatto remembers every text, image and set of files that is copied, and
gives any of it back through a panel of cards along the bottom of the screen,
opened by a global shortcut. Everything is kept in files of the user's own;
what a password manager marks as secret is left alone.

The interface speaks Simplified Chinese.")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE ${PROJECT_HOMEPAGE_URL})

# The program's libraries are found by looking at it; plug-ins that it loads are not.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS qt6-image-formats-plugins)
# Any font with Chinese characters, one with emoji, Qt's way to Wayland compositors, certificates to check for updates,
# and a way to open the download page.
string(JOIN ", " CPACK_DEBIAN_PACKAGE_RECOMMENDS
    "fonts-noto-cjk | fonts-wqy-microhei | fonts-wqy-zenhei | fonts-droid-fallback"
    fonts-noto-color-emoji qt6-wayland ca-certificates xdg-utils)

# With a DESTDIR, because the autostart entry goes outside the prefix.
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS # whatever the umask of whoever builds
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/resources/debian/conffiles)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
