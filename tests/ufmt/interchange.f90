! The other side of the interchange test: writes a fixed set of unformatted sequential
! records, or reads them and says whether every value came back.
!   interchange write|read FILE NATIVE|SWAP
program interchange
  implicit none
  character(len=4096) :: mode, path, order
  integer(4) :: i4
  integer(8) :: i8
  integer(2) :: i2
  real(8) :: r8, a(1000)
  real(4) :: r4
  complex(8) :: z
  logical(4) :: flag
  character(len=3) :: text
  integer :: i, status
  call get_command_argument(1, mode)
  call get_command_argument(2, path)
  call get_command_argument(3, order)
  a = [(i * 0.5d0, i = 1, 1000)]
  if (mode == 'write') then
    open (10, file=trim(path), form='unformatted', status='replace', convert=trim(order))
    write (10) 7_4, 2.5d0, 'XYZ'
    write (10) a
    write (10) (1.5d0, -2.5d0), -9_8, 3_2, .true.
    write (10)
    write (10) 1.25
    close (10)
    stop
  end if
  open (10, file=trim(path), form='unformatted', status='old', convert=trim(order))
  status = 0
  read (10) i4, r8, text
  if (i4 /= 7 .or. r8 /= 2.5d0 .or. text /= 'XYZ') status = 1
  a = 0
  read (10) a
  if (any(a /= [(i * 0.5d0, i = 1, 1000)])) status = 2
  read (10) z, i8, i2, flag
  if (z /= (1.5d0, -2.5d0) .or. i8 /= -9 .or. i2 /= 3 .or. .not. flag) status = 3
  read (10)
  read (10) r4
  if (r4 /= 1.25) status = 4
  close (10)
  if (status /= 0) then
    print '(A, I0)', 'MISMATCH ', status
  else
    print '(A)', 'OK'
  end if
end program interchange
