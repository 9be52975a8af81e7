# The libraries as other projects find them: find_package(Orvistrand) after
# `cmake --install build/PRESET --component devel --prefix FOLDER`.

include(CMakePackageConfigHelpers)
set(configFolder ${CMAKE_INSTALL_LIBDIR}/cmake/Orvistrand)
install(EXPORT orvistrand NAMESPACE orvistrand:: DESTINATION ${configFolder} COMPONENT devel
    FILE OrvistrandTargets.cmake)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/OrvistrandConfigVersion.cmake"
    VERSION "${PROJECT_VERSION}" COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/OrvistrandConfigVersion.cmake"
    "${PROJECT_SOURCE_DIR}/tools/cmake/OrvistrandConfig.cmake"
    DESTINATION ${configFolder} COMPONENT devel)
