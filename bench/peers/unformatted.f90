! The peer of ufmt_bench: 100 MB of REAL(8) arrays in records of 1 MB, written and read
! unformatted, in the machine's order and swapped (CONVERT='SWAP'), each pass from OPEN
! to CLOSE. Prints GB/s (2**30 bytes a second).
program unformatted
  implicit none
  integer, parameter :: n = 131072, nrec = 100
  real(8), allocatable :: x(:)
  integer(8) :: start, finish, rate
  integer :: i, pass
  character(len=4096) :: path
  character(len=6), parameter :: order(2) = ['NATIVE', 'SWAP  ']
  character(len=8), parameter :: label(2) = ['        ', 'swapped_']
  real(8) :: gb
  call get_command_argument(1, path)
  allocate (x(n))
  x = 1.5d0
  gb = dble(n) * 8 * nrec / 2.0d0**30
  do pass = 1, 2
    call system_clock(start, rate)
    open (30, file=trim(path), form='unformatted', status='replace', convert=trim(order(pass)))
    do i = 1, nrec
      write (30) x
    end do
    close (30)
    call system_clock(finish)
    print '(A, F10.3)', trim(label(pass)) // 'write ', gb / (dble(finish - start) / dble(rate))
    call system_clock(start, rate)
    open (30, file=trim(path), form='unformatted', status='old', convert=trim(order(pass)))
    do i = 1, nrec
      read (30) x
    end do
    close (30)
    call system_clock(finish)
    print '(A, F10.3)', trim(label(pass)) // 'read ', gb / (dble(finish - start) / dble(rate))
    open (30, file=trim(path), status='old')
    close (30, status='delete')
  end do
  if (x(7) /= 1.5d0) stop 1
end program unformatted
