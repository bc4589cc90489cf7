! SPDX-License-Identifier: MIT
!
! What the Fortran module adds to the functions. Called by languages_test.cpp.

! 0, or the number of the first statement that does not hold.
function fortran_checks() bind(c) result(failed)
  use, intrinsic :: ieee_exceptions
  use, intrinsic :: iso_c_binding
  use luxvm
  implicit none
  integer(c_int32_t) :: failed, code
  integer :: i
  logical :: domain, pole, overflow
  real(c_double) :: x(6) = [0d0, 1d0, -1d0, 2d0, 4d0, 9d0], y(6), z(6), matrix(2, 3), roots(2, 3)
  complex(c_float_complex) :: c(1) = [(0.0, 1.0)], power(1)
  logical :: holds(8)

  ! Sections with a stride: what lies between is left alone.
  y = -5
  call lux_sqrt(x(2:6:2), y(1:6:2), lux_a50)
  z(1:3) = sqrt([1d0, 2d0, 9d0])
  holds(1) = all(abs(y(1:6:2) - z(1:3)) < 1d-15) .and. all(y(2:6:2) == -5)

  call lux_exp(x, y(:5), status=code)
  holds(2) = code == lux_bad_length .and. y(2) == -5
  call lux_sincos(x, y, z(:5), status=code)
  holds(3) = code == lux_bad_length .and. y(2) == -5
  call lux_pow(x(:0), x(:0), y(:0), status=code)
  holds(4) = code == lux_ok

  ! The status is that of the last element reported, the flags are those of all.
  call ieee_set_flag(ieee_usual, .false.)
  call lux_ln(x, y, status=code)
  call ieee_get_flag(ieee_invalid, domain)
  call ieee_get_flag(ieee_divide_by_zero, pole)
  call ieee_get_flag(ieee_overflow, overflow)
  holds(5) = code == lux_domain .and. domain .and. pole .and. .not. overflow

  matrix = reshape([(real(i * i, c_double), i = 1, 6)], [2, 3])
  holds(6) = luxsSqrt_64f_A53(matrix, roots, size(matrix)) == lux_ok .and. roots(2, 3) == 6
  call lux_powx(c, (2.0, 0.0), power)
  holds(7) = power(1) == (-1.0, 0.0)
  call lux_rint(x, y, status=code)
  holds(8) = code == lux_ok .and. all(x == y)

  failed = 0
  do i = size(holds), 1, -1
    if (.not. holds(i)) failed = i
  end do
end function

! Without a status the program ends where sizes differ.
subroutine fortran_stops() bind(c)
  use luxvm
  implicit none
  real :: x(3) = 1, y(2)
  call lux_exp(x, y)
end subroutine
