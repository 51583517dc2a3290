! The oracle of the formatted-output test: for each case (a format line, then a type letter
! and the value's bits), one WRITE with that format to standard output.
program oracle_writer
  implicit none
  character(len=80) :: fmt
  character(len=1) :: letter
  integer(8) :: bits
  integer :: ios
  do
    read (*, '(A)', iostat=ios) fmt
    if (ios /= 0) exit
    read (*, '(A1,1X,I20)') letter, bits
    select case (letter)
    case ('I')
      write (*, fmt) int(bits, 4)
    case ('J')
      write (*, fmt) bits
    case ('R')
      write (*, fmt) transfer(bits, 1.0d0)
    case ('S')
      write (*, fmt) transfer(int(bits, 4), 1.0)
    case ('L')
      write (*, fmt) bits /= 0
    end select
  end do
end program oracle_writer
