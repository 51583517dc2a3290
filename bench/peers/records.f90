! The peer of file_bench: copies a formatted file record by record with '(A)'.
! Usage: records <input> <output>
program records
  implicit none
  character(len=4096) :: input, output
  character(len=80) :: line
  integer :: status
  call get_command_argument(1, input)
  call get_command_argument(2, output)
  open (10, file=trim(input), status='old', action='read')
  open (11, file=trim(output), status='replace', action='write')
  do
    read (10, '(A)', iostat=status) line
    if (status /= 0) exit
    write (11, '(A)') line
  end do
  close (10)
  close (11)
end program records
