# Read by CPack for each generator: the archives come one for each component, the
# installer holds the tool alone.
if(CPACK_GENERATOR STREQUAL "NSIS")
    set(CPACK_COMPONENTS_ALL tool)
    set(CPACK_MONOLITHIC_INSTALL ON)
    list(GET CPACK_INSTALL_CMAKE_PROJECTS 0 buildFolder)
    set(CPACK_INSTALL_CMAKE_PROJECTS "${buildFolder};OrvistrandConfigure;tool;/")
    set(CPACK_PACKAGE_FILE_NAME "${CPACK_PACKAGE_FILE_NAME}-setup")
endif()
