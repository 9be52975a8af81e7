# Installs the libraries for other projects, which find them by find_package(Orvistrand COMPONENTS
# ...) or pkg-config: `cmake --install build/PRESET --component devel --prefix FOLDER`.

set(configFolder ${CMAKE_INSTALL_LIBDIR}/cmake/Orvistrand)
set(pkgconfigFolder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
# From there up to the prefix, relative, so that the installation can be moved.
file(RELATIVE_PATH up "/${pkgconfigFolder}" /)

# describeLinks(LIBRARY): sorts what the library links into
#   needs     our libraries
#   packages  those of find_package
#   requires  those of pkg-config
#   flags     what else a linker is told
function(describeLinks library)
    set(needs)
    set(packages)
    set(requires)
    get_target_property(flags orvistrand_${library} INTERFACE_LINK_OPTIONS)
    list(TRANSFORM flags REPLACE "^LINKER:" "-Wl,")
    list(FILTER flags EXCLUDE REGEX "NOTFOUND$")
    get_target_property(links orvistrand_${library} INTERFACE_LINK_LIBRARIES)
    foreach(link IN LISTS links)
        string(REGEX REPLACE "^\\$<LINK_ONLY:(.*)>$" "\\1" link "${link}")
        if(link MATCHES BUILD_INTERFACE) # headers that are compiled in
            continue()
        elseif(link MATCHES "^orvistrand::(.*)")
            list(APPEND needs ${CMAKE_MATCH_1})
            list(APPEND requires orvistrand-${CMAKE_MATCH_1})
        elseif(link MATCHES "^absl::(.*)")
            list(APPEND packages absl)
            list(APPEND requires absl_${CMAKE_MATCH_1})
        elseif(link MATCHES "^Qt5::(.*)")
            list(APPEND packages "Qt5 5.15 COMPONENTS ${CMAKE_MATCH_1}")
            list(APPEND requires Qt5${CMAKE_MATCH_1})
        elseif(link MATCHES "^GTest::(.*)")
            list(APPEND packages GTest)
            list(APPEND requires ${CMAKE_MATCH_1})
        elseif(link STREQUAL Threads::Threads)
            list(APPEND packages Threads)
            list(APPEND flags -pthread)
        elseif(link)
            list(APPEND flags -l${link})
        endif()
    endforeach()
    list(REMOVE_DUPLICATES packages)
    string(JOIN " " flags ${flags})
    foreach(result needs packages requires flags)
        set(${result} "${${result}}" PARENT_SCOPE)
    endforeach()
endfunction()

# Bottom up, in the order in which they were added.
get_property(libraries GLOBAL PROPERTY ORVISTRAND_LIBRARIES)
set(links)
foreach(library IN LISTS libraries)
    install(EXPORT orvistrand-${library} NAMESPACE orvistrand:: DESTINATION ${configFolder}
        COMPONENT devel FILE OrvistrandTargets-${library}.cmake)
    describeLinks(${library})
    string(APPEND links "set(Orvistrand_needs_${library} \"${needs}\")\n"
        "set(Orvistrand_packages_${library} \"${packages}\")\n")
    string(JOIN " " requires ${requires})
    configure_file("${PROJECT_SOURCE_DIR}/tools/cmake/orvistrand.pc.in"
        "${PROJECT_BINARY_DIR}/pkgconfig/orvistrand-${library}.pc" @ONLY)
    install(FILES "${PROJECT_BINARY_DIR}/pkgconfig/orvistrand-${library}.pc"
        DESTINATION ${pkgconfigFolder} COMPONENT devel)
endforeach()
foreach(file OrvistrandConfig.cmake OrvistrandConfigVersion.cmake)
    configure_file("${PROJECT_SOURCE_DIR}/tools/cmake/${file}.in" "${PROJECT_BINARY_DIR}/${file}"
        @ONLY)
    install(FILES "${PROJECT_BINARY_DIR}/${file}" DESTINATION ${configFolder} COMPONENT devel)
endforeach()
