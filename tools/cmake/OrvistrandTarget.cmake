# What all targets of this project share: the language level, our warnings, the chosen sanitizers,
# and which half of a platform pair is built.

if(WIN32)
    set(ORVISTRAND_PLATFORM win32)
else()
    set(ORVISTRAND_PLATFORM posix)
endif()

# orvistrand_target(NAME): warnings stay private, so that users never inherit them.
function(orvistrand_target name)
    target_compile_features(${name} PUBLIC cxx_std_20)
    set_target_properties(${name} PROPERTIES CXX_EXTENSIONS OFF)
    target_compile_options(${name} PRIVATE -Wall -Wextra -Wpedantic -Wshadow
        -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-qual -Wundef -fno-omit-frame-pointer)
    # __FILE__ does not depend on where the repository is.
    if(ORVISTRAND_RELEASE)
        orvistrand_release(${name})
    else()
        target_compile_options(${name} PRIVATE -fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=)
    endif()
    if(ORVISTRAND_WERROR)
        target_compile_options(${name} PRIVATE -Werror)
    endif()
    if(ORVISTRAND_SANITIZE)
        target_compile_options(${name} PRIVATE -fsanitize=${ORVISTRAND_SANITIZE}
            -fno-sanitize-recover=all
            # To GCC, the instrumented standard library seems to use uninitialised variables.
            $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
        target_link_options(${name} PUBLIC -fsanitize=${ORVISTRAND_SANITIZE})
    endif()
    get_target_property(type ${name} TYPE)
    if(ORVISTRAND_PDB AND type STREQUAL EXECUTABLE)
        orvistrand_pdb(${name})
    endif()
endfunction()

# NAME.pdb beside the program, where Windows finds names and lines.
if(WIN32 AND CMAKE_CXX_COMPILER_ID STREQUAL Clang)
    set(ORVISTRAND_PDB ON)
    find_package(Python3 3.9 REQUIRED COMPONENTS Interpreter)
elseif(CMAKE_TOOLCHAIN_FILE MATCHES clang)
    message(WARNING "${CMAKE_BINARY_DIR} was configured for another compiler, whose programs have "
        "no PDB. Remove this folder once.")
endif()
function(orvistrand_pdb name)
    set(pdbName "$<TARGET_FILE_BASE_NAME:${name}>.pdb")
    set(pdb "$<TARGET_FILE_DIR:${name}>/${pdbName}")
    # The program refers to the file without a folder.
    target_link_options(${name} PRIVATE -Wl,--pdb=${pdb} -Wl,-Xlink=-pdbaltpath:${pdbName})
    add_custom_command(TARGET ${name} POST_BUILD VERBATIM
        COMMAND ${Python3_EXECUTABLE} ${PROJECT_SOURCE_DIR}/tools/windows/drop_frame_data.py ${pdb})
endfunction()

include(GNUInstallDirs)

# orvistrand_library(NAME [INTERNAL] MODULES m... [PAIRS p...] [INCLUDED i...]): a static library,
# orvistrand::NAME for its users, of modules m.h + m.cpp; a pair also has p_win32.cpp and
# p_posix.cpp, of which the platform's half is built. Unless it is internal, component `devel`
# installs it with its public headers: not those in internal/, win32/ and posix/, which are for its
# own sources and tests, nor the other platform's. From internal/ it installs only i.h, which public
# headers include.
function(orvistrand_library name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "INTERNAL" "" "MODULES;PAIRS;INCLUDED")
    list(TRANSFORM arg_MODULES APPEND .cpp OUTPUT_VARIABLE sources)
    list(TRANSFORM arg_PAIRS APPEND _${ORVISTRAND_PLATFORM}.cpp OUTPUT_VARIABLE halves)
    add_library(orvistrand_${name} STATIC ${sources} ${halves})
    add_library(orvistrand::${name} ALIAS orvistrand_${name})
    set_target_properties(orvistrand_${name} PROPERTIES EXPORT_NAME ${name})
    orvistrand_target(orvistrand_${name})
    if(ORVISTRAND_DESIGNER)
        # The plugin links them; calls within a library stay as fast as in a program.
        set_target_properties(orvistrand_${name} PROPERTIES POSITION_INDEPENDENT_CODE ON)
        target_compile_options(orvistrand_${name} PRIVATE -fno-semantic-interposition)
    endif()
    target_include_directories(orvistrand_${name} PUBLIC
        $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}>
        $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/orvistrand>)
    if(arg_INTERNAL)
        return()
    endif()
    set_property(GLOBAL APPEND PROPERTY ORVISTRAND_LIBRARIES ${name})
    install(TARGETS orvistrand_${name} EXPORT orvistrand-${name} COMPONENT devel
        DESTINATION ${CMAKE_INSTALL_LIBDIR})
    if(NOT WIN32)
        set(otherPlatform PATTERN "*_win32.h" EXCLUDE)
    endif()
    install(DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}/" COMPONENT devel
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/orvistrand
        FILES_MATCHING PATTERN "*.h" PATTERN "*.inc"
        PATTERN internal EXCLUDE PATTERN win32 EXCLUDE PATTERN posix EXCLUDE ${otherPlatform})
    list(TRANSFORM arg_INCLUDED REPLACE "(.+)" "internal/\\1.h")
    install(FILES ${arg_INCLUDED} COMPONENT devel
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/orvistrand/internal)
endfunction()
