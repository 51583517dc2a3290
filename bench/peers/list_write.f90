! The peer of list_bench: WRITE (u, *) of 2,000,000 REAL(8) and 5,000,000 INTEGER(4)
! values, ten a statement, to a file. Prints ns per value for each.
program list_write
  implicit none
  integer, parameter :: nreal = 2000000, nint = 5000000
  real(8), allocatable :: x(:)
  integer, allocatable :: k(:)
  integer(8) :: start, finish, rate
  integer :: i
  character(len=4096) :: path
  call get_command_argument(1, path)
  allocate (x(nreal), k(nint))
  call random_number(x)
  x = (x - 0.5d0) * 2.0d6
  do i = 1, nint
    k(i) = int(x(mod(i - 1, nreal) + 1) * 1000.0d0)
  end do
  open (30, file=trim(path), status='replace')
  call system_clock(start, rate)
  do i = 1, nreal, 10
    write (30, *) x(i:i + 9)
  end do
  call system_clock(finish)
  close (30)
  print '(A, F10.1)', 'reals ', dble(finish - start) / dble(rate) * 1.0d9 / nreal
  open (30, file=trim(path), status='replace')
  call system_clock(start, rate)
  do i = 1, nint, 10
    write (30, *) k(i:i + 9)
  end do
  call system_clock(finish)
  close (30, status='delete')
  print '(A, F10.1)', 'integers ', dble(finish - start) / dble(rate) * 1.0d9 / nint
end program list_write
