! The peer of random_bench: gfortran's RANDOM_NUMBER filling 50,000,000 REAL(8). Prints
! ns per element, the best of five runs.
program random
  implicit none
  integer, parameter :: n = 50000000
  real(8), allocatable :: x(:)
  integer(8) :: start, finish, rate
  real(8) :: best
  integer :: r
  allocate (x(n))
  x = 0
  best = huge(1.0d0)
  do r = 1, 5
    call system_clock(start, rate)
    call random_number(x)
    call system_clock(finish)
    best = min(best, dble(finish - start) / dble(rate))
    if (x(n) > 2.0d0) print *, x(n)
  end do
  print '(A, 1X, F8.3)', 'random_number', best * 1.0d9 / n
end program random
