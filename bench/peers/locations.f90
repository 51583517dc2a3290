! The peer of location_bench: gfortran's MAXLOC and FINDLOC on the same sizes and values.
! Prints GB/s for each case, the best of ten runs.
program locations
  implicit none
  integer, parameter :: n = 50000000, side = 5000, runs = 10
  real(8), allocatable :: x(:), a(:, :)
  integer, allocatable :: k(:), out(:)
  logical, allocatable :: half(:)
  integer :: i, where(1)
  allocate (x(n), k(n), half(n), a(side, side), out(side))
  do i = 1, n
    x(i) = sin(dble(i - 1)) * 1000.0d0
    k(i) = int(mod(int(i - 1, 8) * 7919_8, 1001_8)) - 500
  end do
  half = x > 0
  a = reshape(x(1:side * side), [side, side])
  call report('maxloc_real8', 8.0d0 * n, 1)
  call report('maxloc_real8_mask', 8.0d0 * n, 2)
  call report('maxloc_integer4', 4.0d0 * n, 3)
  call report('findloc_real8', 8.0d0 * n, 4)
  call report('findloc_real8_mask', 8.0d0 * n, 5)
  call report('findloc_integer4', 4.0d0 * n, 6)
  call report('maxloc_dim1', 8.0d0 * side * side, 7)
  call report('maxloc_dim2', 8.0d0 * side * side, 8)
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
        where = maxloc(x)
      case (2)
        where = maxloc(x, mask=half)
      case (3)
        where = maxloc(k)
      case (4)
        where = findloc(x, 5000.0d0)
      case (5)
        where = findloc(x, 5000.0d0, mask=half)
      case (6)
        where = findloc(k, 1000)
      case (7)
        out = maxloc(a, dim=1)
        where(1) = out(side)
      case (8)
        out = maxloc(a, dim=2)
        where(1) = out(side)
      end select
      call system_clock(finish)
      best = min(best, dble(finish - start) / dble(rate))
      if (where(1) == -12345) print *, where
    end do
    print '(A, 1X, F8.2)', name, bytes / best / 1.0d9
  end subroutine report
end program locations
