# Which build this is: for the program's texts (core_rcsname.cpp) and, on Windows, its version
# resource. Release builds set these on the command line.

set(ORVISTRAND_BUILD_TAG "tag_orvistrand_2_1_rc_1" CACHE STRING "Source-control tag of the build")
set(ORVISTRAND_BUILD_STAMP "220329-103018" CACHE STRING "Time of the build, yymmdd-hhmmss")
set(ORVISTRAND_BUILD_MODULE "orvistrand" CACHE STRING "Product module that the build belongs to")
mark_as_advanced(ORVISTRAND_BUILD_TAG ORVISTRAND_BUILD_STAMP ORVISTRAND_BUILD_MODULE)

# The platform named in the build's reports: win_i686, linux_x86_64.
if(WIN32)
    set(ORVISTRAND_BUILD_PLATFORM "win_${CMAKE_SYSTEM_PROCESSOR}")
else()
    string(TOLOWER "${CMAKE_SYSTEM_NAME}_${CMAKE_SYSTEM_PROCESSOR}" ORVISTRAND_BUILD_PLATFORM)
endif()

set(ORVISTRAND_PRODUCT "Orvistrand Configure")
set(ORVISTRAND_COMPANY "Quorvane")

# The version of the packages, by the tag: "2.1-rc1" for a release candidate, "2.1" for a release,
# otherwise the project's.
if(ORVISTRAND_BUILD_TAG MATCHES "_([0-9]+)((_[0-9]+)*)(_rc_([0-9]+))?$")
    string(REPLACE "_" "." ORVISTRAND_VERSION "${CMAKE_MATCH_1}${CMAKE_MATCH_2}")
    if(CMAKE_MATCH_5)
        string(APPEND ORVISTRAND_VERSION "-rc${CMAKE_MATCH_5}")
    endif()
else()
    set(ORVISTRAND_VERSION "${PROJECT_VERSION}")
endif()

# orvistrand_resources(NAME DESCRIPTION [FILE...]): the resources of the Windows program NAME: which
# build it is, and the contents of the files.
if(WIN32)
    enable_language(RC)
endif()
function(orvistrand_resources name description)
    get_target_property(program ${name} OUTPUT_NAME)
    if(NOT program)
        set(program ${name})
    endif()
    set(content)
    foreach(file "${PROJECT_SOURCE_DIR}/tools/cmake/version.rc" ${ARGN})
        file(READ "${file}" part)
        string(APPEND content "${part}")
    endforeach()
    file(CONFIGURE OUTPUT ${program}.rc CONTENT "${content}" @ONLY)
    target_sources(${name} PRIVATE "${CMAKE_CURRENT_BINARY_DIR}/${program}.rc")
endfunction()
