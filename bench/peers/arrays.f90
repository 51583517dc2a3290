! The peer of array_bench: whole arrays of 10,000,000 REAL(8) written and read with
! '(5ES24.16)' and list-directed (ns per value), and unformatted, whole and as the section
! y(1:2n:2) (GB/s, 2**30 bytes a second, of the array's own bytes).
program arrays
  implicit none
  integer, parameter :: n = 10000000
  real(8), allocatable :: x(:), back(:), y(:)
  integer(8) :: start, finish, rate
  character(len=4096) :: path
  real(8) :: gb
  call get_command_argument(1, path)
  allocate (x(n), back(n), y(2 * n))
  call random_number(x)
  x = (x - 0.5d0) * 2.0d6
  y = 1.5d0
  gb = dble(n) * 8 / 2.0d0**30

  open (30, file=trim(path), status='replace')
  call system_clock(start, rate)
  write (30, '(5ES24.16)') x
  call system_clock(finish)
  print '(A, F10.1)', 'es24w ', dble(finish - start) / dble(rate) * 1.0d9 / n
  rewind (30)
  call system_clock(start, rate)
  read (30, '(5ES24.16)') back
  call system_clock(finish)
  print '(A, F10.1)', 'es24r ', dble(finish - start) / dble(rate) * 1.0d9 / n
  close (30, status='delete')

  open (30, file=trim(path), status='replace')
  call system_clock(start, rate)
  write (30, *) x
  call system_clock(finish)
  print '(A, F10.1)', 'ldw ', dble(finish - start) / dble(rate) * 1.0d9 / n
  rewind (30)
  call system_clock(start, rate)
  read (30, *) back
  call system_clock(finish)
  print '(A, F10.1)', 'ldr ', dble(finish - start) / dble(rate) * 1.0d9 / n
  close (30, status='delete')

  call unformatted('whole', x)
  call unformatted('strided', y(1:2 * n:2))
  if (back(n) /= x(n)) stop 1
contains
  subroutine unformatted(label, a)
    character(len=*), intent(in) :: label
    real(8), intent(inout) :: a(:)
    open (30, file=trim(path), form='unformatted', status='replace')
    call system_clock(start, rate)
    write (30) a
    close (30)
    call system_clock(finish)
    print '(A, F10.3)', label // '_write ', gb / (dble(finish - start) / dble(rate))
    open (30, file=trim(path), form='unformatted', status='old')
    call system_clock(start, rate)
    read (30) a
    close (30)
    call system_clock(finish)
    print '(A, F10.3)', label // '_read ', gb / (dble(finish - start) / dble(rate))
    open (30, file=trim(path), status='old')
    close (30, status='delete')
  end subroutine unformatted
end program arrays
