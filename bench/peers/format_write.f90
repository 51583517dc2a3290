! The peer of fmt_write_bench: formatted WRITEs to a file. Prints ns per value (per
! statement for the one-item statements).
program format_write
  implicit none
  integer, parameter :: nreal = 2000000, nint = 5000000, nstatements = 2000000
  real(8), allocatable :: x(:)
  integer, allocatable :: k(:)
  integer(8) :: start, finish, rate
  integer :: i
  character(len=4096) :: path
  character(len=4) :: text
  call get_command_argument(1, path)
  allocate (x(nreal), k(nint))
  call random_number(x)
  x = (x - 0.5d0) * 2.0d6
  do i = 1, nint
    k(i) = int(x(mod(i - 1, nreal) + 1) * 1000.0d0)
  end do
  open (30, file=trim(path), status='replace')
  call system_clock(start, rate)
  do i = 1, nreal, 5
    write (30, '(5ES24.16)') x(i:i + 4)
  end do
  call system_clock(finish)
  print '(A, F10.1)', 'es24 ', dble(finish - start) / dble(rate) * 1.0d9 / nreal
  rewind (30)
  call system_clock(start, rate)
  do i = 1, nreal, 10
    write (30, '(10F12.4)') x(i:i + 9)
  end do
  call system_clock(finish)
  print '(A, F10.1)', 'f12 ', dble(finish - start) / dble(rate) * 1.0d9 / nreal
  rewind (30)
  call system_clock(start, rate)
  do i = 1, nint, 10
    write (30, '(10I12)') k(i:i + 9)
  end do
  call system_clock(finish)
  print '(A, F10.1)', 'i12 ', dble(finish - start) / dble(rate) * 1.0d9 / nint
  rewind (30)
  call system_clock(start, rate)
  do i = 1, nstatements
    write (30, '(I5)') mod(i, 10000)
  end do
  call system_clock(finish)
  print '(A, F10.1)', 'i5 ', dble(finish - start) / dble(rate) * 1.0d9 / nstatements
  rewind (30)
  text = '(I5)'
  call system_clock(start, rate)
  do i = 1, nstatements
    write (30, text) mod(i, 10000)
  end do
  call system_clock(finish)
  print '(A, F10.1)', 'i5text ', dble(finish - start) / dble(rate) * 1.0d9 / nstatements
  close (30, status='delete')
end program format_write
