# Programs for packages: hardened, and identical wherever and whenever they are built. Target
# `orvistrand_shipped` builds them all.

option(ORVISTRAND_RELEASE
    "Harden the programs, and leave the paths and times of this machine out of them" OFF)

file(RELATIVE_PATH toSources "${CMAKE_BINARY_DIR}" "${CMAKE_SOURCE_DIR}")
string(REGEX REPLACE "([^/])$" "\\1/" toSources "${toSources}")

# orvistrand_release(NAME): Debian's hardening=+all, as far as MinGW supports it; docs/packaging.md
# says what is missing there. Source names are relative to the repository, whether the compiler gets
# absolute or relative paths.
function(orvistrand_release name)
    target_compile_options(${name} PRIVATE -fstack-protector-strong -U_FORTIFY_SOURCE
        -D_FORTIFY_SOURCE=2 -Wformat -Werror=format-security -Wdate-time
        -ffile-prefix-map=${toSources}=)
    if(WIN32)
        # ccache turns colours on, and that option would end up in the PDB.
        target_compile_options(${name} PRIVATE -ffile-compilation-dir=. -fno-color-diagnostics)
        # The static library, since the import library beside it needs one more DLL.
        target_link_options(${name} PRIVATE -l:libssp.a -Wl,-Xlink=-Brepro
            -Wl,-Xlink=-pdbsourcepath:.)
    else()
        target_compile_options(${name} PRIVATE -fstack-clash-protection
            -ffile-prefix-map=${PROJECT_SOURCE_DIR}/= -fdebug-prefix-map=${CMAKE_BINARY_DIR}=.)
        target_link_options(${name} PRIVATE -pie -Wl,-z,relro -Wl,-z,now)
    endif()
endfunction()

# A PDB contains the command lines of compiler and linker, so they get relative paths.
if(ORVISTRAND_RELEASE AND WIN32)
    set(launcher "\"${PROJECT_SOURCE_DIR}/tools/windows/relative_paths.sh\" \
\"${CMAKE_BINARY_DIR}\" \"${CMAKE_SOURCE_DIR}\" ${toSources}")
    set_property(GLOBAL PROPERTY RULE_LAUNCH_COMPILE "${launcher}")
    set_property(GLOBAL PROPERTY RULE_LAUNCH_LINK "${launcher}")
endif()

# orvistrand_ship(NAME): puts program NAME into the packages, without its debug information, which
# debuggers find by the file's name. On Windows the file keeps its name; on Linux, where all
# programs share a folder, it has the target's.
add_custom_target(orvistrand_shipped)
function(orvistrand_ship name)
    get_target_property(file ${name} OUTPUT_NAME)
    if(NOT file)
        set(file ${name})
    endif()
    if(WIN32)
        set(program ${file}.exe)
        set(programFolder .)
        set(debugFolder .)
    else()
        set(program ${name})
        set(programFolder bin)
        set(debugFolder lib/debug/usr/bin)
    endif()
    set(folder "${PROJECT_BINARY_DIR}/shipped")
    add_custom_command(OUTPUT "${folder}/${program}" "${folder}/${program}.debug"
        DEPENDS ${name}
        COMMAND ${CMAKE_COMMAND} -E make_directory "${folder}"
        COMMAND ${CMAKE_COMMAND} -E chdir "${folder}"
            ${CMAKE_OBJCOPY} --only-keep-debug $<TARGET_FILE:${name}> ${program}.debug
        COMMAND ${CMAKE_COMMAND} -E chdir "${folder}"
            ${CMAKE_OBJCOPY} --strip-all --add-gnu-debuglink=${program}.debug
            $<TARGET_FILE:${name}> ${program}
        VERBATIM)
    add_custom_target(${name}_shipped ALL
        DEPENDS "${folder}/${program}" "${folder}/${program}.debug")
    add_dependencies(orvistrand_shipped ${name}_shipped)
    install(PROGRAMS "${folder}/${program}" DESTINATION ${programFolder} COMPONENT tool)
    install(FILES "${folder}/${program}.debug" DESTINATION ${debugFolder} COMPONENT debug)
    # There the program finds the names and lines for its own stacks.
    if(ORVISTRAND_PDB)
        install(FILES $<TARGET_FILE_DIR:${name}>/${file}.pdb DESTINATION symbols COMPONENT tool)
    endif()
endfunction()
