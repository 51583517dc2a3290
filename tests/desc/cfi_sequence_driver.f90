! Runs the C descriptor sequence under a Fortran main program compiled with -fcheck=all,
! so that gfortran's run-time checks the arguments of its CFI_ procedures.
program cfi_sequence_driver
  use iso_c_binding, only: c_int
  interface
    integer(c_int) function cfi_sequence() bind(c)
      import :: c_int
    end function
  end interface
  integer :: status
  status = cfi_sequence()
end program
