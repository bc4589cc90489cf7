# SPDX-License-Identifier: MIT
# What every object of the shared libraries is compiled and linked with.
#
# The processor class is the promise: x87, MMX and SSE, nothing later. Old callers align the stack to
# 4 bytes only, hence -mstackrealign. Vectorised code would bring SSE arithmetic into functions that
# promise not to depend on MXCSR, so only intrinsics may produce it. Whatever the build type is, the
# library is optimised as it ships: where GCC keeps numbers in registers is part of its results.
set(LUX_LIBRARY_COMPILE_OPTIONS
    -O2
    -march=pentium3 -mfpmath=387 -mstackrealign -fno-tree-vectorize -fno-tree-slp-vectorize
    -ffp-contract=off -fvisibility=hidden -fno-math-errno
    $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti -fno-threadsafe-statics>)
# The wide library is compiled with these and for AVX2; nothing that counts or checks at run time has a place
# in it, since it calls no function of another library.
set(LUX_WIDE_COMPILE_OPTIONS ${LUX_LIBRARY_COMPILE_OPTIONS} -mavx2 -mfma -mfpmath=sse -fno-stack-protector
                             -U_FORTIFY_SOURCE -fno-sanitize=all)
if(LUX_SANITIZE)
  # The address sanitizer marks the stack in units of 8 bytes, and -mstackrealign leaves a frame that
  # holds no packed numbers where a caller put it: at multiples of 4.
  list(APPEND LUX_LIBRARY_COMPILE_OPTIONS -mincoming-stack-boundary=2)
endif()
if(LUX_COVERAGE)
  # Counts of threads that race may be lost; atomic ones of 64 bits need a library on this processor.
  list(APPEND LUX_LIBRARY_COMPILE_OPTIONS --coverage -fprofile-abs-path -fprofile-update=single)
endif()

# nodelete: the runtime's threads may stand in the library's code, and fork handlers and the
# thread-local pool size stay registered, after a program has closed it.
set(LUX_LIBRARY_LINK_OPTIONS
    -Wl,-z,nodelete -Wl,--as-needed -Wl,--no-undefined -Wl,-z,noexecstack -Wl,-z,text -Wl,-z,relro -Wl,-z,now)
