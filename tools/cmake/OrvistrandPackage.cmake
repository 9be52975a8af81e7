# How CPack packs the installed tool, for ./package. For Windows: a zip archive that runs in place
# and an installer. For Linux: a Debian package. For both: an archive with the debug information.

set(ORVISTRAND_CONTACT "support@quorvane.invalid" CACHE STRING "The maintainer's mail address")
set(ORVISTRAND_URL "https://quorvane.invalid" CACHE STRING "The maker's page")

set(CPACK_PACKAGE_NAME orvistrand-configure)
set(CPACK_PACKAGE_VENDOR "${ORVISTRAND_COMPANY}")
set(CPACK_PACKAGE_CONTACT "${ORVISTRAND_COMPANY} <${ORVISTRAND_CONTACT}>")
set(CPACK_PACKAGE_VERSION "${ORVISTRAND_VERSION}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "sets the connection to the video recorder")
set(CPACK_PACKAGE_INSTALL_DIRECTORY "${ORVISTRAND_COMPANY}/${ORVISTRAND_PRODUCT}")
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/package")
set(CPACK_PROJECT_CONFIG_FILE "${PROJECT_SOURCE_DIR}/packaging/generators.cmake")
set(CPACK_COMPONENTS_ALL tool debug)
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE
    GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(licenses /usr/share/common-licenses)
set(copyrights /usr/share/doc)
set(notices "${PROJECT_SOURCE_DIR}/packaging/notices")
set(documents "${PROJECT_SOURCE_DIR}/docs/crashes.md" "${PROJECT_SOURCE_DIR}/docs/reporting.md"
    "${PROJECT_SOURCE_DIR}/packaging/operating.md")
set(pictures "${PROJECT_SOURCE_DIR}/docs/images/collect-wide.png")

# installAs(FOLDER NAME FILE): installs FILE under another name.
function(installAs folder name file)
    install(FILES "${file}" DESTINATION "${folder}" RENAME "${name}" COMPONENT tool)
endfunction()

# debianVersion(RESULT PACKAGE): the installed version, from which the programs were built.
function(debianVersion result package)
    execute_process(COMMAND dpkg-query -W -f "\${Version}" ${package}
        OUTPUT_VARIABLE version ERROR_QUIET)
    set(${result} "${version}" PARENT_SCOPE)
endfunction()

if(WIN32)
    set(CPACK_GENERATOR ZIP NSIS)
    set(CPACK_PACKAGE_FILE_NAME
        "${CPACK_PACKAGE_NAME}-${ORVISTRAND_VERSION}-${ORVISTRAND_BUILD_PLATFORM}")
    set(CPACK_COMPONENT_INCLUDE_TOPLEVEL_DIRECTORY ON)
    set(CPACK_ARCHIVE_TOOL_FILE_NAME "${CPACK_PACKAGE_FILE_NAME}")
    # The installer's script is ours: CMake looks for NSIS.template.in along this path.
    list(PREPEND CMAKE_MODULE_PATH "${PROJECT_SOURCE_DIR}/packaging/windows")
    set(CPACK_ORVISTRAND_COMPANY "${ORVISTRAND_COMPANY}")
    set(CPACK_ORVISTRAND_PRODUCT "${ORVISTRAND_PRODUCT}")
    set(CPACK_ORVISTRAND_NUMBERS "${PROJECT_VERSION}.0")
    set(CPACK_ORVISTRAND_ICON "${PROJECT_SOURCE_DIR}/configure/resources/configure.ico")
    set(CPACK_ORVISTRAND_NSIS "${PROJECT_SOURCE_DIR}/packaging/windows")
    set(CPACK_ORVISTRAND_URL "${ORVISTRAND_URL}")
    set(CPACK_ORVISTRAND_CONTACT "${ORVISTRAND_CONTACT}")

    # For what crashes and reports leave, in the program's working directory.
    install(DIRECTORY DESTINATION dumps COMPONENT tool)
    install(DIRECTORY DESTINATION files COMPONENT tool)
    install(FILES ${documents} DESTINATION documents COMPONENT tool)
    install(FILES ${pictures} DESTINATION documents/images COMPONENT tool)
    debianVersion(gccVersion gcc-mingw-w64-i686-posix-runtime)
    debianVersion(mingwVersion mingw-w64-i686-dev)
    debianVersion(nsisVersion nsis)
    set(contents contents-windows.json)
    set(contentsList ${CPACK_PACKAGE_NAME}.spdx.json)
    installAs(. third-party-notices.txt "${notices}/third-party-notices-windows.txt")
    installAs(licenses LGPL-3.txt "${licenses}/LGPL-3")
    installAs(licenses GPL-3.txt "${licenses}/GPL-3")
    installAs(licenses Apache-2.0.txt "${licenses}/Apache-2.0")
    installAs(licenses qt.txt "${copyrights}/qtbase5-dev/copyright")
    installAs(licenses abseil.txt "${copyrights}/libabsl-dev/copyright")
    installAs(licenses gcc-runtime.txt "${copyrights}/gcc-mingw-w64-i686-posix-runtime/copyright")
    installAs(licenses mingw-w64.txt "${copyrights}/mingw-w64-i686-dev/copyright")
else()
    set(CPACK_GENERATOR DEB TXZ)
    set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
    string(REPLACE "-rc" "~rc" CPACK_DEBIAN_PACKAGE_VERSION "${ORVISTRAND_VERSION}")
    set(CPACK_DEBIAN_PACKAGE_SECTION utils)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
    set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
    execute_process(COMMAND dpkg --print-architecture OUTPUT_VARIABLE architecture
        OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
    set(CPACK_PACKAGE_FILE_NAME "${CPACK_PACKAGE_NAME}-${ORVISTRAND_VERSION}-linux_${architecture}")
    set(CPACK_DEBIAN_FILE_NAME "${CPACK_PACKAGE_FILE_NAME}.deb")
    set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "\
Shows the network address and port of the video recorder that the
Orvistrand integration service connects to, and lets an operator change
them. It includes a collector of reports of failed checks, a service that is
disabled by default.")

    string(REGEX REPLACE "^(..)(..)(..)-(..)(..)(..)$" "20\\1-\\2-\\3 \\4:\\5:\\6 UTC"
        stampTime "${ORVISTRAND_BUILD_STAMP}")
    # dateOf(RESULT FORMAT): the time of the build.
    function(dateOf result format)
        execute_process(COMMAND date -u -d "${stampTime}" "${format}" OUTPUT_VARIABLE date
            OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
        set(${result} "${date}" PARENT_SCOPE)
    endfunction()
    dateOf(packageDate -R)
    dateOf(packageDay +%F)

    # The working directory of the menu entry.
    set(ORVISTRAND_WORK_DIR "${ORVISTRAND_COMMON_DATA_DIR}/orvistrand-configure")
    set(linux "${PROJECT_SOURCE_DIR}/packaging/linux")
    set(made "${PROJECT_BINARY_DIR}/packaging")
    set(papers share/doc/${CPACK_PACKAGE_NAME})
    foreach(file orvistrand-configure.desktop orvistrand-configure.metainfo.xml
            postinst prerm postrm)
        configure_file("${linux}/${file}" "${made}/${file}" @ONLY)
    endforeach()
    set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA "${made}/postinst" "${made}/prerm" "${made}/postrm")
    set(CPACK_DEBIAN_PACKAGE_DEPENDS passwd)
    set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "${ORVISTRAND_URL}")
    install(FILES "${made}/orvistrand-configure.desktop" DESTINATION share/applications
        COMPONENT tool)
    install(FILES "${made}/orvistrand-configure.metainfo.xml" DESTINATION share/metainfo
        COMPONENT tool)
    install(FILES ${documents} DESTINATION ${papers} COMPONENT tool)
    install(FILES ${pictures} DESTINATION ${papers}/images COMPONENT tool)
    installAs(share/icons/hicolor/scalable/apps orvistrand-configure.svg
        "${PROJECT_SOURCE_DIR}/configure/resources/configure.svg")
    installAs(${papers} copyright "${linux}/copyright")
    installAs(${papers} third-party-notices.txt "${notices}/third-party-notices-linux.txt")

    # Debian wants the changelog and manual pages compressed, without a timestamp.
    function(installCompressed folder name file)
        set(result "${PROJECT_BINARY_DIR}/packaging/${name}")
        configure_file("${file}" "${PROJECT_BINARY_DIR}/packaging/${name}.txt" @ONLY)
        execute_process(COMMAND gzip -9n INPUT_FILE "${PROJECT_BINARY_DIR}/packaging/${name}.txt"
            OUTPUT_FILE "${result}" COMMAND_ERROR_IS_FATAL ANY)
        install(FILES "${result}" DESTINATION "${folder}" COMPONENT tool)
    endfunction()
    installCompressed(${papers} changelog.gz "${linux}/changelog")
    installCompressed(share/man/man1 orvistrand-configure.1.gz "${linux}/orvistrand-configure.1")
    installCompressed(share/man/man1 orvistrand-collect.1.gz "${linux}/orvistrand-collect.1")
    install(FILES "${linux}/orvistrand-collect.service" DESTINATION lib/systemd/system
        COMPONENT tool)
    debianVersion(qtVersion libqt5core5a)
    debianVersion(abslVersion libabsl-dev)
    debianVersion(elfutilsVersion libdw1)
    debianVersion(gccVersion libstdc++6)
    set(contents contents-linux.json)
    set(contentsList ${papers}/${CPACK_PACKAGE_NAME}.spdx.json)
endif()

# At the end: the list of what was installed, and the same time for all files.
find_package(Python3 3.9 REQUIRED COMPONENTS Interpreter)
configure_file("${notices}/${contents}.in" "${PROJECT_BINARY_DIR}/packaging/${contents}" @ONLY)
set(finish "${Python3_EXECUTABLE}" "${PROJECT_SOURCE_DIR}/tools/finish_package.py")
set(listing --contents "${PROJECT_BINARY_DIR}/packaging/${contents}" ${contentsList})
string(JOIN "' '" CPACK_ORVISTRAND_FINISH ${finish} ${listing})
string(PREPEND CPACK_ORVISTRAND_FINISH "'")
string(APPEND CPACK_ORVISTRAND_FINISH "'")
foreach(component tool debug)
    set(options)
    if(component STREQUAL tool)
        set(options ${listing})
    endif()
    string(JOIN "\" \"" command ${finish} ${options})
    install(CODE "set(root \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}\")
    if(root MATCHES \"/_CPack_Packages/\")
        execute_process(COMMAND \"${command}\" \"\${root}\" COMMAND_ERROR_IS_FATAL ANY)
    endif()" COMPONENT ${component})
endforeach()

set(CPACK_ARCHIVE_DEBUG_FILE_NAME "${CPACK_PACKAGE_FILE_NAME}-debug")

# Last, since it reads what is set above.
include(CPack)
