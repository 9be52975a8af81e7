# CMake toolchain: our own 32-bit Windows programs. Clang and lld build them, with the headers and
# libraries of g++, since only they write debug information that Windows can read.

include("${CMAKE_CURRENT_LIST_DIR}/i686-w64-mingw32.cmake")

# The g++ folder with the files that both compilers use, among them the start-up object, without
# which no exception would be caught.
execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-libgcc-file-name
    OUTPUT_VARIABLE libgcc OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
cmake_path(GET libgcc PARENT_PATH gccFolder)
set(gccHeaders "${gccFolder}/include/c++")

foreach(language C CXX)
    set(CMAKE_${language}_COMPILER_TARGET i686-w64-mingw32)
endforeach()
set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_CXX_FLAGS_INIT "-gcodeview -nostdinc++ -isystem ${gccHeaders} \
-isystem ${gccHeaders}/i686-w64-mingw32 -isystem ${gccHeaders}/backward")
# The same stack size as with GNU's linker.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-fuse-ld=lld -Wl,--stack,2097152 -B${gccFolder} -L${gccFolder} \
-Wno-unused-command-line-argument")
