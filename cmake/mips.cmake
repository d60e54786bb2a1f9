# Big-endian MIPS Linux with Debian's cross compiler; programs run under user-mode emulation.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR mips)
set(CMAKE_C_COMPILER mips-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER mips-linux-gnu-g++)
# A board has little flash: calls go straight to their function and not through a table of addresses, which this
# architecture pays for with a quarter of the code.
set(CMAKE_C_FLAGS_INIT "-fno-pie -mno-shared -mplt")
set(CMAKE_CXX_FLAGS_INIT "-fno-pie -mno-shared -mplt")
# Nor does it leave a gap in the file between code and data, to save a page of memory where pages are small.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-no-pie -Wl,-z,common-page-size=65536")
# A read-only table of functions begins a page of 64 KiB, and costs 51,000 bytes of nothing in the file to guard 500.
set(QVP_RELRO OFF CACHE BOOL "Make the table of functions read-only once the program is linked")
set(CMAKE_FIND_ROOT_PATH /usr/mips-linux-gnu)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-mips -L /usr/mips-linux-gnu)
