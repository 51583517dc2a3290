! The peer of fmt_read_bench: formatted READs from a file in the page cache. Prints ns
! per value.
program format_read
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
  do i = 1, nreal, 5
    write (30, '(5ES24.16)') x(i:i + 4)
  end do
  rewind (30)
  call system_clock(start, rate)
  do i = 1, nreal, 5
    read (30, '(5ES24.16)') x(i:i + 4)
  end do
  call system_clock(finish)
  print '(A, F10.1)', 'es24 ', dble(finish - start) / dble(rate) * 1.0d9 / nreal
  rewind (30)
  do i = 1, nreal, 10
    write (30, '(10F12.4)') x(i:i + 9)
  end do
  endfile (30)
  rewind (30)
  call system_clock(start, rate)
  do i = 1, nreal, 10
    read (30, '(10F12.4)') x(i:i + 9)
  end do
  call system_clock(finish)
  print '(A, F10.1)', 'f12 ', dble(finish - start) / dble(rate) * 1.0d9 / nreal
  rewind (30)
  do i = 1, nint, 10
    write (30, '(10I12)') k(i:i + 9)
  end do
  endfile (30)
  rewind (30)
  call system_clock(start, rate)
  do i = 1, nint, 10
    read (30, '(10I12)') k(i:i + 9)
  end do
  call system_clock(finish)
  print '(A, F10.1)', 'i12 ', dble(finish - start) / dble(rate) * 1.0d9 / nint
  close (30, status='delete')
end program format_read
