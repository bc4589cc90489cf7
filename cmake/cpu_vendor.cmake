# SPDX-License-Identifier: MIT
# LUX_CPU_VENDORS: the CPUID vendor identifications for which calls may be threaded.
set(LUX_CPU_VENDORS GenuineIntel AuthenticAMD CACHE STRING
    "CPUID vendor identifications that enable threading, as a list")
foreach(vendor IN LISTS LUX_CPU_VENDORS)
  string(LENGTH "${vendor}" length)
  if(NOT length EQUAL 12)
    message(FATAL_ERROR "a vendor identification has 12 characters, not ${length}: '${vendor}'")
  endif()
endforeach()
# The list as one text, for the compiler.
list(JOIN LUX_CPU_VENDORS "" LUX_CPU_VENDORS_TEXT)
