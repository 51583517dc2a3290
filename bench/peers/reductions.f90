! The peer of reduction_bench: gfortran's SUM and MAXVAL on the same sizes. Prints GB/s
! for each case, the best of ten runs.
program reductions
  implicit none
  integer, parameter :: n = 50000000, side = 5000, runs = 10
  real(8), allocatable :: x(:), a(:, :), out(:)
  integer, allocatable :: k(:)
  real(8) :: s
  integer :: i, total
  allocate (x(n), k(n), a(side, side), out(side))
  do i = 1, n
    x(i) = sin(dble(i - 1)) * 1000.0d0
    k(i) = int(mod(int(i - 1, 8) * 7919_8, 1001_8)) - 500
  end do
  a = reshape(x(1:side * side), [side, side])
  call report('sum_real8', 8.0d0 * n, 1)
  call report('maxval_real8', 8.0d0 * n, 2)
  call report('sum_integer4', 4.0d0 * n, 3)
  call report('sum_dim1', 8.0d0 * side * side, 4)
  call report('sum_dim2', 8.0d0 * side * side, 5)
contains
  subroutine report(name, bytes, which)
    character(*), intent(in) :: name
    real(8), intent(in) :: bytes
    integer, intent(in) :: which
    integer(8) :: start, finish, rate
    real(8) :: best
    integer :: r
    best = huge(1.0d0)
    do r = 1, runs
      call system_clock(start, rate)
      select case (which)
      case (1)
        s = sum(x)
      case (2)
        s = maxval(x)
      case (3)
        total = sum(k)
        s = total
      case (4)
        out = sum(a, dim=1)
        s = out(side)
      case (5)
        out = sum(a, dim=2)
        s = out(side)
      end select
      call system_clock(finish)
      best = min(best, dble(finish - start) / dble(rate))
      if (s == 12345.678d0) print *, s
    end do
    print '(A, 1X, F8.2)', name, bytes / best / 1.0d9
  end subroutine report
end program reductions
