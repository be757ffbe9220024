# Static programs with Debian's musl-tools. There is no C++ library for musl: g++'s headers are
# given the names that they expect of glibc, templates are compiled here, and the tests bring the
# few functions that remain (tests/support/musl_runtime.cpp).
set(CMAKE_SYSTEM_NAME Generic)  # no shared libraries
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(ROXE_MUSL ON)
set(CMAKE_C_COMPILER musl-gcc)
set(CMAKE_CXX_COMPILER g++-12)
set(CMAKE_CXX_FLAGS_INIT "-specs=/usr/lib/x86_64-linux-musl/musl-gcc.specs \
-isystem /usr/include/c++/12 -isystem /usr/include/x86_64-linux-gnu/c++/12 \
-isystem /usr/include/x86_64-linux-musl -D_GLIBCXX_EXTERN_TEMPLATE=0 -fno-exceptions \
-include ${CMAKE_CURRENT_LIST_DIR}/../tests/support/musl_names.h")
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
