# SPDX-License-Identifier: MIT
# cmake -D FILES=... -D VERSION=... -D OUTPUT=... -P wide_identity.cmake
#
# What a build of the main library and one of the wide library must have in common: the version, and
# everything that a kernel's results may come from. The order of the files is that of their names.
set(all ${VERSION})
foreach(file ${FILES})
  file(SHA256 ${file} hash)
  string(APPEND all " ${hash}")
endforeach()
string(SHA256 identity "${all}")
string(SUBSTRING ${identity} 0 40 identity)
file(WRITE ${OUTPUT} "#define LUX_WIDE_IDENTITY \"${identity}\"\n")
