! A Fortran program whose module procedure asks for a traceback, three calls deep.
module solver
contains
  recursive subroutine step(n)
    integer, intent(in) :: n
    if (n > 0) then
      call step(n - 1)
    else
      call vr__trbk()
    end if
  end subroutine step
end module solver

program main_program
  use solver
  call step(2)
end program main_program
