! SPDX-License-Identifier: MIT
program first
  use luxvm
  implicit none
  double precision :: x(4) = [0d0, 1d0, -1d0, 10d0], y(4)
  integer :: i, status
  call lux_exp(x, y, status=status)
  do i = 1, 4
    print '(a, f0.0, a, es24.16)', 'exp of ', x(i), ' is ', y(i)
  end do
  if (status /= lux_ok) stop 1
end program
