! The peer of inquire_bench: INQUIRE by unit with nine specifiers, by file with EXIST=,
! and INQUIRE(IOLENGTH=) of five items, each 1,000,000 times; ns per statement.
!   inquire DIRECTORY
program inquire_peer
  implicit none
  integer, parameter :: n = 1000000
  character(len=4096) :: dir
  character(len=256) :: name
  character(len=16) :: access, form, action
  logical :: exist, opened, named
  integer :: number, recl, length, i
  integer(8) :: start, finish, rate, big(5)
  complex(8) :: z
  call get_command_argument(1, dir)
  big = 0
  z = 0
  open (30, file=trim(dir)//'/vrn_bench_inquire_peer', status='replace')
  call system_clock(start, rate)
  do i = 1, n
    inquire (30, exist=exist, opened=opened, named=named, number=number, recl=recl, name=name, &
             access=access, form=form, action=action)
  end do
  call system_clock(finish)
  print '(A, F10.1)', 'unit ', dble(finish - start) / dble(rate) * 1.0d9 / n
  close (30)
  call system_clock(start, rate)
  do i = 1, n
    inquire (file=trim(dir)//'/vrn_bench_inquire_peer', exist=exist)
  end do
  call system_clock(finish)
  print '(A, F10.1)', 'file ', dble(finish - start) / dble(rate) * 1.0d9 / n
  call system_clock(start, rate)
  do i = 1, n
    inquire (iolength=length) 1_4, 2.5d0, 'characters', z, big
  end do
  call system_clock(finish)
  print '(A, F10.1)', 'iolength ', dble(finish - start) / dble(rate) * 1.0d9 / n
  if (.not. exist .or. length /= 78) print *, 'unexpected', exist, length
  open (30, file=trim(dir)//'/vrn_bench_inquire_peer')
  close (30, status='delete')
end program inquire_peer
