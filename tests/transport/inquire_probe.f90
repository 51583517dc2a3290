! The other side of the INQUIRE comparison: sets up units and files in the directory it
! is given, then prints one line per INQUIRE, with only the answers that the standard
! fixes for that case.
!   inquire_probe DIRECTORY
program inquire_probe
  implicit none
  character(len=4096) :: dir
  character(len=40) :: access, form, action, blank, delim, pad, sign, decimal, round, async
  logical :: exist, opened, named
  integer :: number, recl, nextrec, length
  integer(8) :: size, pos
  integer :: i, status
  integer(8) :: big(5)
  complex(8) :: z

  call get_command_argument(1, dir)

  ! A sequential formatted connection, by unit and by file.
  open (10, file=trim(dir)//'/seq', status='replace', delim='quote', sign='plus')
  write (10, '(a)') 'hello'
  inquire (10, exist=exist, opened=opened, number=number, named=named, access=access, form=form, &
           blank=blank, delim=delim, pad=pad, sign=sign, decimal=decimal, round=round, asynchronous=async)
  print '(a,2l2,i4,l2,10(1x,a))', 'unit10', exist, opened, number, named, trim(access), trim(form), &
        trim(blank), trim(delim), trim(pad), trim(sign), trim(decimal), trim(round), trim(async)
  inquire (file=trim(dir)//'/seq', exist=exist, opened=opened, number=number, access=access, form=form)
  print '(a,2l2,i4,2(1x,a))', 'seq', exist, opened, number, trim(access), trim(form)

  ! Direct access, after record 3.
  open (11, file=trim(dir)//'/dir', access='direct', recl=8, form='unformatted', status='replace', action='write')
  write (11, rec=3) 1, 2
  inquire (11, access=access, form=form, recl=recl, nextrec=nextrec, size=size, action=action)
  print '(a,2(1x,a),i4,i4,i6,1x,a)', 'unit11', trim(access), trim(form), recl, nextrec, size, trim(action)

  ! Stream access, after 10 bytes.
  open (12, file=trim(dir)//'/str', access='stream', form='unformatted', status='replace')
  write (12) 7, 'abcdef'
  inquire (12, access=access, pos=pos, size=size)
  print '(a,1x,a,2i6)', 'unit12', trim(access), pos, size

  ! A file written and closed, a unit closed, and a file that is not there.
  open (13, file=trim(dir)//'/closed', status='replace', form='unformatted', access='stream')
  write (13) 'twelve bytes'
  close (13)
  inquire (file=trim(dir)//'/closed', exist=exist, opened=opened, number=number, size=size)
  print '(a,2l2,i4,i6)', 'closed', exist, opened, number, size
  inquire (13, exist=exist, opened=opened)
  print '(a,2l2)', 'unit13', exist, opened
  inquire (file=trim(dir)//'/absent', exist=exist, opened=opened)
  print '(a,2l2)', 'absent', exist, opened

  ! One file under a second name and a symbolic link.
  open (14, file=trim(dir)//'/one', status='replace')
  call link(trim(dir)//'/one', trim(dir)//'/hard', status)
  call symlnk(trim(dir)//'/one', trim(dir)//'/soft', status)
  inquire (file=trim(dir)//'/hard', opened=opened, number=number)
  print '(a,l2,i4)', 'hard', opened, number
  inquire (file=trim(dir)//'/soft', opened=opened, number=number)
  print '(a,l2,i4)', 'soft', opened, number

  ! Standard output, and an unformatted scratch file.
  inquire (6, opened=opened, number=number, access=access, form=form)
  print '(a,l2,i4,2(1x,a))', 'unit6', opened, number, trim(access), trim(form)
  open (15, status='scratch', form='unformatted')
  inquire (15, opened=opened, form=form)
  print '(a,l2,1x,a)', 'scratch', opened, trim(form)

  ! IOLENGTH of a list of every kind of item.
  inquire (iolength=length) 1_4, 2.5d0, 'characters', z, big, .true., 1_1
  print '(a,i6)', 'iolength', length
  do i = 10, 15
    close (i)
  end do
end program inquire_probe
