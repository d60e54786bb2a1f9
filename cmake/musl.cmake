# A static daemon against musl. The wrapper's specs give g++ musl's headers in place of the host's; there is no C++
# library for musl here, which the daemon does not need, so only the daemon is built.
execute_process(COMMAND musl-gcc -print-file-name=. OUTPUT_QUIET RESULT_VARIABLE has_musl)
if(NOT has_musl EQUAL 0)
    message(FATAL_ERROR "musl-gcc not found (package musl-tools)")
endif()
file(GLOB musl_specs /usr/lib/*-linux-musl/musl-gcc.specs)
set(CMAKE_C_COMPILER musl-gcc)
set(CMAKE_CXX_COMPILER g++)
set(CMAKE_CXX_FLAGS_INIT "-specs=${musl_specs}")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
set(QVP_DAEMON_ONLY ON CACHE BOOL "Build the daemon alone" FORCE)
