! The peer of list_read_bench: list-directed READs, ten values a record, from a file in
! the page cache. Prints ns per value.
program list_read
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
  do i = 1, nreal, 10
    write (30, '(10ES25.16)') x(i:i + 9)
  end do
  rewind (30)
  call system_clock(start, rate)
  do i = 1, nreal, 10
    read (30, *) x(i:i + 9)
  end do
  call system_clock(finish)
  print '(A, F10.1)', 'r8 ', dble(finish - start) / dble(rate) * 1.0d9 / nreal
  rewind (30)
  do i = 1, nint, 10
    write (30, '(10I12)') k(i:i + 9)
  end do
  endfile (30)
  rewind (30)
  call system_clock(start, rate)
  do i = 1, nint, 10
    read (30, *) k(i:i + 9)
  end do
  call system_clock(finish)
  print '(A, F10.1)', 'i4 ', dble(finish - start) / dble(rate) * 1.0d9 / nint
  close (30, status='delete')
end program list_read
