# cmake -DBUILD=... -DSOURCE=... -DCOMPILER=... -P run.cmake: installs the libraries of a build into
# a scratch folder and uses them in all the ways that other projects do.
set(scratch "${BUILD}/install-test")
file(REMOVE_RECURSE "${scratch}")
function(run)
    execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()
run(${CMAKE_COMMAND} --install "${BUILD}" --component devel --prefix "${scratch}/installed")

message(STATUS "Found by CMake")
run(${CMAKE_COMMAND} -S "${SOURCE}" -B "${scratch}/user" -G Ninja
    "-DCMAKE_CXX_COMPILER=${COMPILER}" "-DCMAKE_PREFIX_PATH=${scratch}/installed")
run(${CMAKE_COMMAND} --build "${scratch}/user")
run("${scratch}/user/user")
run("${scratch}/user/user_test")

message(STATUS "Found by pkg-config, and moved")
file(RENAME "${scratch}/installed" "${scratch}/moved")
file(GLOB_RECURSE described "${scratch}/moved/*/orvistrand-utils.pc")
cmake_path(GET described PARENT_PATH folder)
set(ENV{PKG_CONFIG_PATH} "${folder}")
execute_process(COMMAND pkg-config --cflags --libs orvistrand-utils
    OUTPUT_VARIABLE flags COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(flags UNIX_COMMAND "${flags}")
run(${COMPILER} -std=c++20 "${SOURCE}/user.cpp" ${flags} -o "${scratch}/by-pkg-config")
run(pkg-config --exists --print-errors orvistrand-testing orvistrand-qtwidgets)
run("${scratch}/by-pkg-config")

message(STATUS "As a part of the other project")
run(${CMAKE_COMMAND} -S "${SOURCE}/parent" -B "${scratch}/parent" -G Ninja
    "-DCMAKE_CXX_COMPILER=${COMPILER}" "-DORVISTRAND=${SOURCE}/../..")
# Its install rules; for them it is enough that the libraries are files.
file(TOUCH "${scratch}/parent/configure")
foreach(library textmarkup core kern utils)
    file(TOUCH "${scratch}/parent/orvistrand/libs/${library}/liborvistrand_${library}.a")
endforeach()
run(${CMAKE_COMMAND} --install "${scratch}/parent" --prefix "${scratch}/parent-installed")
