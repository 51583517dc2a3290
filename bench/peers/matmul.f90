! The peer of matmul_bench: gfortran's MATMUL intrinsic on square REAL(8) matrices.
! Prints GFLOP/s (2 n^3 a product), the best of three runs, for n = 500, 1000, 2000.
program matmul_peer
  implicit none
  integer :: sizes(3) = [500, 1000, 2000]
  integer :: s, n, r
  real(8), allocatable :: a(:, :), b(:, :), c(:, :)
  integer(8) :: start, finish, rate
  real(8) :: best
  do s = 1, 3
    n = sizes(s)
    allocate (a(n, n), b(n, n), c(n, n))
    call random_number(a)
    call random_number(b)
    best = huge(1.0d0)
    do r = 1, 3
      call system_clock(start, rate)
      c = matmul(a, b)
      call system_clock(finish)
      best = min(best, dble(finish - start) / dble(rate))
      if (c(1, 1) < -1.0d0) print *, c(1, 1)
    end do
    print '(A, I0, 1X, F8.3)', 'matmul_', n, 2.0d0 * dble(n)**3 / best / 1.0d9
    deallocate (a, b, c)
  end do
end program matmul_peer
