# SPDX-License-Identifier: MIT
# LUX_GFORTRAN: a gfortran that builds 32-bit programs, for the Fortran module's tests and examples;
# empty where there is none. Nothing else needs it, so it is no language of the project. Its programs do
# not start with the sanitizers' libraries.
find_program(LUX_GFORTRAN_PROGRAM gfortran)
set(LUX_GFORTRAN)
if(LUX_GFORTRAN_PROGRAM AND NOT LUX_SANITIZE)
  file(WRITE ${PROJECT_BINARY_DIR}/fortran/try.f90 "end\n")
  execute_process(COMMAND ${LUX_GFORTRAN_PROGRAM} -m32 try.f90 -o try
                  WORKING_DIRECTORY ${PROJECT_BINARY_DIR}/fortran RESULT_VARIABLE failed OUTPUT_QUIET ERROR_QUIET)
  if(NOT failed)
    set(LUX_GFORTRAN ${LUX_GFORTRAN_PROGRAM} -m32 -std=f2008 -Wall -Wextra -pedantic -Wno-compare-reals)
  endif()
endif()

# Compile a file to an object, which joins the caller's list `objects`, and its modules. Behind it stand
# the files whose modules it uses.
function(lux_fortran_object source)
  get_filename_component(stem ${source} NAME_WE)
  set(object ${PROJECT_BINARY_DIR}/fortran/${stem}.o)
  set(used)
  foreach(module ${ARGN})
    list(APPEND used ${PROJECT_BINARY_DIR}/fortran/${module}.o)
  endforeach()
  add_custom_command(
    OUTPUT ${object}
    COMMAND ${LUX_GFORTRAN} -O2 -J${PROJECT_BINARY_DIR}/fortran -c ${source} -o ${object}
    DEPENDS ${source} ${used}
    VERBATIM)
  set(objects ${objects} ${object} PARENT_SCOPE)
endfunction()
