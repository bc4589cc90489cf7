! SPDX-License-Identifier: MIT
!
! Distances in kilometres from one place to 100,000 others, along great circles.
module places
  use luxvm
  use beside_libm
  implicit none

  ! A place has two coordinates, five intermediate numbers and a distance here, 64 bytes. 1024 places
  ! take 64 KB, which stay in the second-level cache from one call to the next, while arrays of 800 KB
  ! would come from memory in every call. In much shorter chunks, starting the calls would take longer
  ! than the arithmetic.
  integer, parameter :: chunk = 1024

  real(c_double), parameter :: radius = 6371d0, here_latitude = 0.898d0, here_longitude = 0.002d0  ! radians
  real(c_double), dimension(elements), save :: latitude, longitude, ours, theirs

contains

  ! With h = sin^2 of half the difference in latitude + cos cos sin^2 of half that in longitude, the
  ! distance is 2 r asin(sqrt(h)). A result has an array of its own.
  subroutine by_luxvm
    real(c_double), dimension(chunk), save :: a, b, up, across, cosine
    integer :: first, last, n
    do first = 1, elements, chunk
      last = min(first + chunk - 1, elements)
      n = last - first + 1
      a(:n) = 0.5d0 * (latitude(first:last) - here_latitude)
      b(:n) = 0.5d0 * (longitude(first:last) - here_longitude)
      call lux_sin(a(:n), up(:n))
      call lux_sin(b(:n), across(:n))
      call lux_cos(latitude(first:last), cosine(:n))
      a(:n) = up(:n)**2 + cos(here_latitude) * cosine(:n) * across(:n)**2
      call lux_sqrt(a(:n), b(:n))
      call lux_asin(b(:n), up(:n))
      ours(first:last) = 2 * radius * up(:n)
    end do
  end subroutine

  subroutine by_libm
    real(c_double) :: up, across
    integer :: i
    do i = 1, elements
      up = sin(0.5d0 * (latitude(i) - here_latitude))
      across = sin(0.5d0 * (longitude(i) - here_longitude))
      theirs(i) = 2 * radius * asin(sqrt(up**2 + cos(here_latitude) * cos(latitude(i)) * across**2))
    end do
  end subroutine

end module places

program great_circle
  use places
  implicit none
  real(c_double) :: time, libm_time

  latitude = spread_over(0.75487766624669276d0, -1.5707d0, 1.5707d0)
  longitude = spread_over(0.56984029099805327d0, -3.1415d0, 3.1415d0)
  time = shortest(by_luxvm)
  libm_time = shortest(by_libm)
  ! Next to the antipode the arc sine is steep: a last place of h becomes micrometres.
  call report('great circles, km (Fortran)', time, libm_time, maxval(abs(ours - theirs)), 1d-8)
end program great_circle
