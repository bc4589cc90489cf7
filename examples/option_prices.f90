! SPDX-License-Identifier: MIT
!
! Prices of 100,000 call options by the formula of Black and Scholes.
module options
  use luxvm
  use beside_libm
  implicit none

  ! An option has three arguments, six intermediate numbers and a price here, 80 bytes. 1024 options
  ! take 80 KB, which stay in the second-level cache from one call to the next. Over all options at
  ! once, every call would fetch 800 KB from memory and write as much back; in much shorter chunks,
  ! starting the calls would take longer than the arithmetic.
  integer, parameter :: chunk = 1024

  real(c_double), parameter :: rate = 0.03d0, volatility = 0.2d0, root_half = 0.70710678118654752d0
  real(c_double), dimension(elements), save :: spot, strike, years, ours, theirs

contains

  ! The normal distribution of d is erfc(-d / sqrt(2)) / 2. A result has an array of its own.
  subroutine by_luxvm
    real(c_double), dimension(chunk), save :: a, b, c, n1, n2, discount
    integer :: first, last, n
    do first = 1, elements, chunk
      last = min(first + chunk - 1, elements)
      n = last - first + 1
      call lux_div(spot(first:last), strike(first:last), a(:n))
      call lux_ln(a(:n), b(:n))
      call lux_sqrt(years(first:last), c(:n))
      c(:n) = volatility * c(:n)
      a(:n) = -root_half * ((b(:n) + rate * years(first:last)) / c(:n) + 0.5d0 * c(:n))
      b(:n) = a(:n) + root_half * c(:n)
      c(:n) = -rate * years(first:last)
      call lux_erfc(a(:n), n1(:n))
      call lux_erfc(b(:n), n2(:n))
      call lux_exp(c(:n), discount(:n))
      ours(first:last) = 0.5d0 * (spot(first:last) * n1(:n) - strike(first:last) * discount(:n) * n2(:n))
    end do
  end subroutine

  subroutine by_libm
    real(c_double) :: deviation, d1
    integer :: i
    do i = 1, elements
      deviation = volatility * sqrt(years(i))
      d1 = (log(spot(i) / strike(i)) + rate * years(i)) / deviation + 0.5d0 * deviation
      theirs(i) = 0.5d0 * (spot(i) * erfc(-root_half * d1) &
        - strike(i) * exp(-rate * years(i)) * erfc(-root_half * (d1 - deviation)))
    end do
  end subroutine

end module options

program option_prices
  use options
  implicit none
  real(c_double) :: time, libm_time

  spot = spread_over(0.61803398874989485d0, 50d0, 150d0)
  strike = spread_over(0.75487766624669276d0, 50d0, 150d0)
  years = spread_over(0.56984029099805327d0, 0.1d0, 5d0)
  time = shortest(by_luxvm)
  libm_time = shortest(by_libm)
  call report('option prices (Fortran)', time, libm_time, maxval(abs(ours - theirs)), 1d-12)
end program option_prices
