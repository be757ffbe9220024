# Cross build for WebAssembly with Debian's clang-14, wasi-libc and libc++; programs run in node.
set(CMAKE_SYSTEM_NAME Generic)
set(CMAKE_SYSTEM_PROCESSOR wasm32)
set(CMAKE_C_COMPILER clang-14)
set(CMAKE_CXX_COMPILER clang++-14)
set(CMAKE_AR llvm-ar-14)
set(CMAKE_RANLIB llvm-ranlib-14)
set(CMAKE_C_FLAGS_INIT "--target=wasm32-wasi --sysroot=/usr -isystem /usr/include/wasm32-wasi")
# libc++ comes first among the folders: its headers include those of libc.
set(CMAKE_CXX_FLAGS_INIT "--target=wasm32-wasi --sysroot=/usr -fno-exceptions \
-isystem /usr/include/wasm32-wasi/c++/v1 -isystem /usr/include/wasm32-wasi")
# The stack lies first in memory, so that it ends in a trap and not in other data.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-L/usr/lib/wasm32-wasi -Wl,--stack-first -Wl,-z,stack-size=1048576")
set(CMAKE_CROSSCOMPILING_EMULATOR
  node ${CMAKE_CURRENT_LIST_DIR}/run_wasm.mjs)
