# 32-bit x86 build on an x86-64 host. The kernel here cannot run 32-bit
# binaries, so CTest runs each test under user-mode emulation.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)

set(CMAKE_C_COMPILER gcc)
set(CMAKE_CXX_COMPILER g++)
set(WEX_32BIT_FLAGS "-m32 -D_FILE_OFFSET_BITS=64 -D_TIME_BITS=64")
set(CMAKE_C_FLAGS_INIT "${WEX_32BIT_FLAGS}")
set(CMAKE_CXX_FLAGS_INIT "${WEX_32BIT_FLAGS}")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-m32")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-m32")

find_program(WEX_QEMU_I386 qemu-i386 REQUIRED)
set(CMAKE_CROSSCOMPILING_EMULATOR "${WEX_QEMU_I386}")
