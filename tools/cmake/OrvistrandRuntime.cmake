# The files that Windows programs need beside them. All programs are built into one folder, run/,
# where they run in place; the tool is installed with the same files. Other projects do this for
# their programs themselves.

# Debian's Abseil uses linker options that lld does not have.
get_property(imported DIRECTORY PROPERTY IMPORTED_TARGETS)
list(FILTER imported INCLUDE REGEX "^absl::")
foreach(library IN LISTS imported)
    get_target_property(needed ${library} INTERFACE_LINK_LIBRARIES)
    list(FILTER needed EXCLUDE REGEX "^-Wl,--(push|pop)-state")
    set_target_properties(${library} PROPERTIES INTERFACE_LINK_LIBRARIES "${needed}")
endforeach()
if(NOT ORVISTRAND_BUILD_PROGRAMS OR NOT ORVISTRAND_BUILD_TOOLKIT)
    return()
endif()

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/run")
set(ORVISTRAND_PLUGIN_FOLDER 3rdparty/qt5/plugins) # below the working directory of the tool

set(runtimeFiles)
foreach(library Qt5::Core Qt5::Gui Qt5::Widgets)
    get_target_property(file ${library} LOCATION)
    list(APPEND runtimeFiles "${file}")
endforeach()
foreach(dll libgcc_s_dw2-1 libstdc++-6 libwinpthread-1)
    list(APPEND runtimeFiles "${ORVISTRAND_WINDOWS_CACHE}/runtime/${dll}.dll")
endforeach()
# By it the plugins are found from other working directories, too.
list(APPEND runtimeFiles "${PROJECT_SOURCE_DIR}/configure/resources/qt.conf")

get_target_property(qtCore Qt5::Core LOCATION)
cmake_path(GET qtCore PARENT_PATH qtPlugins)
cmake_path(REPLACE_FILENAME qtPlugins plugins)
# Qt's plugins: those of the tool, and those only for tests.
set(toolPlugins platforms/qwindows.dll styles/qwindowsvistastyle.dll)
set(testPlugins platforms/qoffscreen.dll platforms/qminimal.dll)

install(FILES ${runtimeFiles} DESTINATION . COMPONENT tool)
foreach(plugin IN LISTS toolPlugins)
    cmake_path(GET plugin PARENT_PATH folder)
    install(FILES "${qtPlugins}/${plugin}"
        DESTINATION ${ORVISTRAND_PLUGIN_FOLDER}/${folder} COMPONENT tool)
endforeach()

# copyBeside(NAME FILE): the build copies FILE to run/NAME.
set(copies)
macro(copyBeside name file)
    set(copy "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${name}")
    add_custom_command(OUTPUT "${copy}" DEPENDS "${file}"
        COMMAND ${CMAKE_COMMAND} -E copy "${file}" "${copy}" VERBATIM)
    list(APPEND copies "${copy}")
endmacro()

if(ORVISTRAND_BUILD_TESTS)
    find_package(Qt5 5.15 REQUIRED COMPONENTS Test)
    get_target_property(file Qt5::Test LOCATION)
    list(APPEND runtimeFiles "${file}")
endif()
foreach(file IN LISTS runtimeFiles)
    cmake_path(GET file FILENAME name)
    copyBeside("${name}" "${file}")
endforeach()
foreach(plugin IN LISTS toolPlugins testPlugins)
    copyBeside("${ORVISTRAND_PLUGIN_FOLDER}/${plugin}" "${qtPlugins}/${plugin}")
endforeach()
add_custom_target(orvistrand_runtime ALL DEPENDS ${copies})
