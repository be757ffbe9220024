# Cross build with one of Debian's cross compilers, run under qemu-user. ROXE_MACHINE is the first
# part of the compiler's name: aarch64, arm, i686, powerpc64le, riscv64 or s390x.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ROXE_MACHINE)
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR ${ROXE_MACHINE})
set(triplet ${ROXE_MACHINE}-linux-gnu)
if(ROXE_MACHINE STREQUAL "arm")
  string(APPEND triplet eabihf)
endif()
set(CMAKE_C_COMPILER ${triplet}-gcc)
set(CMAKE_CXX_COMPILER ${triplet}-g++)
# The emulators of two have other names.
set(emulated ${ROXE_MACHINE})
if(ROXE_MACHINE STREQUAL "i686")
  set(emulated i386)
elseif(ROXE_MACHINE STREQUAL "powerpc64le")
  set(emulated ppc64le)
endif()
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-${emulated} -L /usr/${triplet})
