# The Debian package of the program: `cpack -G DEB` in the build folder (or `make package`).
# Its shared-library dependencies are computed by dpkg-shlibdeps; what the program loads as
# plugins at run time (the SQLite driver, the SVG icon engine, the TIFF reader) and the data it
# reads from other packages (country names, flags) is named here.
# The catalogue server is not in it: it is a service for the catalogue's operator, not for the
# people who run the program, and it needs Qt HttpServer, which the program does not.
include(GNUInstallDirs)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME orvane)
set(CPACK_PACKAGE_VENDOR Brenmoor)
set(CPACK_PACKAGE_CONTACT "Brenmoor <support@brenmoor.com>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}.${PROJECT_VERSION_PATCH})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "collection manager for coins, rounds and bars")
set(CPACK_PACKAGE_DESCRIPTION
    "Orvane keeps a collection of bullion and collectable coins in one file, searches an online
catalogue for new items, fetches spot prices for six metals and values every item.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS
    "libqt6sql6-sqlite, libqt6svg6, qt6-image-formats-plugins, iso-codes, famfamfam-flag-png")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "fonts-dejavu-core")
include(CPack)
