! SPDX-License-Identifier: MIT
!
! What the Fortran examples with 100,000 elements share, as beside_libm.h does for C.
module beside_libm
  use, intrinsic :: iso_c_binding, only: c_double, c_int64_t
  implicit none
  integer, parameter :: elements = 100000, rounds = 7

  abstract interface
    subroutine computation()
    end subroutine
  end interface

contains

  ! Between low and high, evenly spread over the elements; `step` is irrational, another one for each
  ! array.
  function spread_over(step, low, high) result(x)
    real(c_double), intent(in) :: step, low, high
    real(c_double) :: x(elements)
    integer :: i
    x = [(low + (high - low) * modulo((i - 1) * step, 1d0), i = 1, elements)]
  end function

  ! The shortest of some runs, in milliseconds.
  function shortest(compute) result(least)
    procedure(computation) :: compute
    real(c_double) :: least
    integer(c_int64_t) :: start, finish, rate
    integer :: round
    least = huge(least)
    do round = 1, rounds
      call system_clock(start, rate)
      call compute
      call system_clock(finish)
      least = min(least, 1d3 * (finish - start) / rate)
    end do
  end function

  ! Ends the program with 1 where the difference is above the bound, or a NaN.
  subroutine report(what, ours, libm, largest, bound)
    character(*), intent(in) :: what
    real(c_double), intent(in) :: ours, libm, largest, bound
    write (*, '(a30, a, f8.3, a, f8.3, a, es7.1, a, es7.1, a)') what // repeat(' ', 30), ' luxvm', ours, &
      ' ms  libm', libm, ' ms  largest difference ', largest, ' (at most ', bound, ')'
    if (.not. largest <= bound) stop 1
  end subroutine

end module beside_libm
