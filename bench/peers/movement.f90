! The peer of movement_bench: gfortran's data-movement intrinsics on the same sizes and
! values. Prints GB/s for each case, the best of ten runs.
program movement
  implicit none
  integer, parameter :: n = 50000000, side = 5000, square = 4000, runs = 10
  real(8), allocatable :: x(:), a(:, :), b(:, :), c(:, :), t(:, :), u(:, :), w(:)
  logical, allocatable :: half(:), half2(:, :)
  integer :: i
  allocate (x(n), half(n), a(side, side), b(side, side), c(side, side), t(square, square), u(square, square), w(n))
  allocate (half2(side, side))
  do i = 1, n
    x(i) = sin(dble(i - 1)) * 1000.0d0
  end do
  half = x > 0
  a = reshape(x(1:side * side), [side, side])
  half2 = reshape(half(1:side * side), [side, side])
  c = reshape(x(side * side + 1:2 * side * side), [side, side])
  t = reshape(x(1:square * square), [square, square])
  call report('transpose', 8.0d0 * square * square, 1)
  call report('cshift_dim1', 8.0d0 * side * side, 2)
  call report('cshift_dim2', 8.0d0 * side * side, 3)
  call report('eoshift_dim1', 8.0d0 * side * side, 4)
  call report('eoshift_dim2', 8.0d0 * side * side, 5)
  call report('reshape', 8.0d0 * side * side, 6)
  call report('spread_dim1', 8.0d0 * side * side, 7)
  call report('spread_dim2', 8.0d0 * side * side, 8)
  call report('merge', 8.0d0 * side * side, 9)
  call report('pack', 8.0d0 * n, 10)
  call report('unpack', 8.0d0 * n, 11)
contains
  subroutine report(name, bytes, which)
    character(*), intent(in) :: name
    real(8), intent(in) :: bytes
    integer, intent(in) :: which
    integer(8) :: start, finish, rate
    real(8) :: best, s
    integer :: r
    best = huge(1.0d0)
    do r = 1, runs
      call system_clock(start, rate)
      select case (which)
      case (1)
        u = transpose(t)
        s = u(1, 2)
      case (2)
        b = cshift(a, 7, dim=1)
        s = b(1, 1)
      case (3)
        b = cshift(a, 7, dim=2)
        s = b(1, 1)
      case (4)
        b = eoshift(a, -7, dim=1)
        s = b(1, 1)
      case (5)
        b = eoshift(a, -7, dim=2)
        s = b(1, 1)
      case (6)
        b = reshape(x(1:side * side), [side, side])
        s = b(1, 1)
      case (7)
        b = spread(x(1:side), 1, side)
        s = b(1, 1)
      case (8)
        b = spread(x(1:side), 2, side)
        s = b(1, 1)
      case (9)
        b = merge(a, c, half2)
        s = b(1, 1)
      case (10)
        w(1:count(half)) = pack(x, half)
        s = w(1)
      case (11)
        w = unpack(x, half, 0.0d0)
        s = w(1)
      end select
      call system_clock(finish)
      best = min(best, dble(finish - start) / dble(rate))
      if (s == 12345.678d0) print *, s
    end do
    print '(A, 1X, F8.2)', name, bytes / best / 1.0d9
  end subroutine report
end program movement
