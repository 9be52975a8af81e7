# Read by CPack for each generator. There is one archive for each component; the installer and the
# Debian package contain only the tool.
if(CPACK_GENERATOR MATCHES "NSIS|DEB")
    set(CPACK_MONOLITHIC_INSTALL ON)
    list(GET CPACK_INSTALL_CMAKE_PROJECTS 0 buildFolder)
    set(CPACK_COMPONENTS_ALL tool)
    set(CPACK_INSTALL_CMAKE_PROJECTS "${buildFolder};OrvistrandConfigure;tool;/")
endif()
if(CPACK_GENERATOR STREQUAL "NSIS")
    set(CPACK_PACKAGE_FILE_NAME "${CPACK_PACKAGE_FILE_NAME}-setup")
elseif(CPACK_GENERATOR STREQUAL "TXZ")
    set(CPACK_COMPONENTS_ALL debug)
endif()
