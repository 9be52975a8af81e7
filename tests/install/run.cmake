# cmake -DBUILD=... -DSOURCE=... -DCOMPILER=... -P run.cmake: installs the libraries of a
# build into a scratch folder and builds and runs a user's project on them.
set(scratch "${BUILD}/install-test")
file(REMOVE_RECURSE "${scratch}")
function(run)
    execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()
run(${CMAKE_COMMAND} --install "${BUILD}" --component devel --prefix "${scratch}/installed")
run(${CMAKE_COMMAND} -S "${SOURCE}" -B "${scratch}/user" -G Ninja
    "-DCMAKE_CXX_COMPILER=${COMPILER}" "-DCMAKE_PREFIX_PATH=${scratch}/installed")
run(${CMAKE_COMMAND} --build "${scratch}/user")
run("${scratch}/user/user")
