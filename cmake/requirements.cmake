# SPDX-License-Identifier: MIT
# What the libraries cannot be built without is told here, in one sentence each.

if(NOT CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  message(FATAL_ERROR "luxvm is built with GCC (tried: 11 and 12), since its double precision must be "
          "computed on the x87 unit beside SSE code (-mfpmath=387), which ${CMAKE_CXX_COMPILER_ID} cannot do")
endif()
if(CMAKE_CXX_COMPILER_VERSION VERSION_LESS 11)
  message(FATAL_ERROR "luxvm needs GCC 11 or later (tried: 11 and 12), not ${CMAKE_CXX_COMPILER_VERSION}")
endif()
if(DEFINED BUILD_SHARED_LIBS AND NOT BUILD_SHARED_LIBS)
  message(FATAL_ERROR "luxvm has shared libraries only, since one thread count serves the whole process, "
          "programs take the reports over by a dynamic symbol, and the code must stay loaded while the "
          "runtime's threads wait in it: leave BUILD_SHARED_LIBS unset")
endif()

# The compiler's own word for its target, with the flags that the toolchain file and the user gave.
separate_arguments(flags UNIX_COMMAND "${CMAKE_CXX_FLAGS}")
execute_process(COMMAND ${CMAKE_CXX_COMPILER} ${flags} -dM -E -x c++ /dev/null
                OUTPUT_VARIABLE macros ERROR_QUIET)
if(NOT macros MATCHES "#define __i386__ 1")
  message(FATAL_ERROR "luxvm is a library for 32-bit x86, and this compiler builds for another machine: "
          "configure with a preset (cmake --preset release), or for an x86 with -DCMAKE_CXX_FLAGS=-m32 "
          "-DCMAKE_C_FLAGS=-m32")
endif()
