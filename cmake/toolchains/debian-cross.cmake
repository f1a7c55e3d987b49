# Debian's cross compiler for CMAKE_SYSTEM_PROCESSOR, and the emulator that runs what it builds.
set(CMAKE_SYSTEM_NAME Linux)
set(triplet ${CMAKE_SYSTEM_PROCESSOR}-linux-gnu)
set(CMAKE_C_COMPILER ${triplet}-gcc)
set(CMAKE_CXX_COMPILER ${triplet}-g++)

# The libraries that the kit needs, as scripts/make-sysroot makes them; without them, those of the compiler.
set(target_root ${CMAKE_CURRENT_LIST_DIR}/../../build/sysroot-${CMAKE_SYSTEM_PROCESSOR})
if(EXISTS ${target_root})
  cmake_path(NORMAL_PATH target_root)
  set(CMAKE_SYSROOT ${target_root})
  set(ENV{PKG_CONFIG_SYSROOT_DIR} ${target_root})
  set(ENV{PKG_CONFIG_LIBDIR} ${target_root}/usr/lib/${triplet}/pkgconfig)
else()
  set(target_root /usr/${triplet})
endif()
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-${CMAKE_SYSTEM_PROCESSOR} -L ${target_root})

# Programs are this machine's, libraries are the target's. Headers without code, such as the JSON library's, serve both.
set(CMAKE_FIND_ROOT_PATH ${target_root})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE BOTH)
