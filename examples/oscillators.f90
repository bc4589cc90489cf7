! SPDX-License-Identifier: MIT
!
! A bank of 100,000 oscillators in single precision, moved on by one step: the phase of each, and its
! two outputs.
module bank
  use, intrinsic :: iso_c_binding, only: c_float
  use luxvm
  use beside_libm
  implicit none

  ! An oscillator has a phase, a step and two outputs here, 16 bytes. 2048 of them take 32 KB, which
  ! stay in the second-level cache between the assignments and the call, while arrays of 400 KB would
  ! come from memory in each. In much shorter chunks, starting the calls would take longer than the
  ! sines.
  integer, parameter :: chunk = 2048

  real(c_float), parameter :: turn = 6.2831853
  real(c_float), dimension(elements), save :: start, step, volume, phase, our_sine, our_cosine, sine, cosine

contains

  ! lux_a21 is enough for sound of 20 bits.
  subroutine by_luxvm
    integer :: first, last
    do first = 1, elements, chunk
      last = min(first + chunk - 1, elements)
      phase(first:last) = start(first:last) + step(first:last)
      where (phase(first:last) >= turn) phase(first:last) = phase(first:last) - turn
      call lux_sincos(phase(first:last), our_sine(first:last), our_cosine(first:last), lux_a21)
      our_sine(first:last) = our_sine(first:last) * volume(first:last)
      our_cosine(first:last) = our_cosine(first:last) * volume(first:last)
    end do
  end subroutine

  subroutine by_libm
    real(c_float) :: x
    integer :: i
    do i = 1, elements
      x = start(i) + step(i)
      if (x >= turn) x = x - turn
      sine(i) = volume(i) * sin(x)
      cosine(i) = volume(i) * cos(x)
    end do
  end subroutine

end module bank

program oscillators
  use bank
  implicit none
  real(c_double) :: time, libm_time, largest

  start = real(spread_over(0.61803398874989485d0, 0d0, 6.2831d0), c_float)
  step = real(spread_over(0.75487766624669276d0, 0d0, 3.1415d0), c_float)
  volume = real(spread_over(0.56984029099805327d0, 0d0, 1d0), c_float)
  time = shortest(by_luxvm)
  libm_time = shortest(by_libm)
  largest = max(maxval(abs(our_sine - sine)), maxval(abs(our_cosine - cosine)))
  ! 2^-21 of A21 and 2^-21 for phases up to 9.43, which one of the loops may leave unrounded in a
  ! register; a unit of libm's sine, half of one for the product with the volume.
  call report('oscillator bank (Fortran)', time, libm_time, largest, 2d0**(-20) + 1.5d0 * 2d0**(-24))
end program oscillators
