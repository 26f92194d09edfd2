# Cross-builds capdump for Linux on arm64. Debian's packages: g++-aarch64-linux-gnu and, of the foreign
# architecture, zlib1g-dev:arm64. The manual is made by a program of the build: only with an emulator for
# it in CMAKE_CROSSCOMPILING_EMULATOR.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
find_program(ARM64_CC NAMES aarch64-linux-gnu-gcc aarch64-linux-gnu-gcc-12 REQUIRED)
find_program(ARM64_CXX NAMES aarch64-linux-gnu-g++ aarch64-linux-gnu-g++-12 REQUIRED)
set(CMAKE_C_COMPILER ${ARM64_CC})
set(CMAKE_CXX_COMPILER ${ARM64_CXX})
set(CMAKE_FIND_ROOT_PATH /usr/aarch64-linux-gnu)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
