! The peer of async_bench: 1 GB of REAL(8) in 64 MB pieces with the same arithmetic per
! element (the work in tenths of a round, as async_bench calibrated it), written to the
! file given as the first argument: as sequential records on a new file (the work is the
! second argument) and as direct-access records rewritten in place (the third). Prints
! the seconds of the arithmetic alone, the writes alone, the two one after the other, and
! the two overlapped with ASYNCHRONOUS='YES', ID= and WAIT.
program async
  implicit none
  integer, parameter :: n = 8388608, pieces = 16
  real(8), allocatable, asynchronous :: x(:, :)
  integer(8) :: start, finish, rate
  integer :: work(2), mode
  character(len=4096) :: path
  character(len=32) :: argument
  character(len=8), parameter :: label(2) = ['new_    ', 'rewrite_']
  call get_command_argument(1, path)
  call get_command_argument(2, argument)
  read (argument, *) work(1)
  call get_command_argument(3, argument)
  read (argument, *) work(2)
  allocate (x(n, 2))
  x = 0
  do mode = 1, 2
    if (mode == 2) call pass(.false., .false.)   ! the file to rewrite
    call system_clock(start, rate)
    call pass(.true., .false.)
    call system_clock(finish)
    print '(A, F10.4)', trim(label(mode)) // 'compute ', dble(finish - start) / dble(rate)
    call system_clock(start, rate)
    call pass(.false., .false.)
    call system_clock(finish)
    print '(A, F10.4)', trim(label(mode)) // 'write ', dble(finish - start) / dble(rate)
    call system_clock(start, rate)
    call pass(.false., .true.)
    call system_clock(finish)
    print '(A, F10.4)', trim(label(mode)) // 'synchronous ', dble(finish - start) / dble(rate)
    call system_clock(start, rate)
    call overlapped()
    call system_clock(finish)
    print '(A, F10.4)', trim(label(mode)) // 'overlapped ', dble(finish - start) / dble(rate)
    open (40, file=trim(path), status='old')
    close (40, status='delete')
  end do

contains

  subroutine open_file(asynchronous)
    character(len=*), intent(in) :: asynchronous
    if (mode == 1) then
      open (40, file=trim(path), form='unformatted', status='replace', asynchronous=asynchronous)
    else
      open (40, file=trim(path), form='unformatted', status='unknown', access='direct', recl=8 * n, &
            asynchronous=asynchronous)
    end if
  end subroutine open_file

  ! The arithmetic alone, the writes alone, or one after the other.
  subroutine pass(compute_only, both)
    logical, intent(in) :: compute_only, both
    integer :: k
    if (.not. compute_only) call open_file('no')
    do k = 0, pieces - 1
      if (compute_only .or. both) call compute(x(:, iand(k, 1) + 1), k)
      if (compute_only) cycle
      if (mode == 1) then
        write (40) x(:, iand(k, 1) + 1)
      else
        write (40, rec=k + 1) x(:, iand(k, 1) + 1)
      end if
    end do
    if (.not. compute_only) close (40)
  end subroutine pass

  subroutine overlapped()
    integer :: k, ids(2)
    call open_file('yes')
    do k = 0, pieces - 1
      if (k >= 2) wait (40, id=ids(iand(k, 1) + 1))
      call compute(x(:, iand(k, 1) + 1), k)
      if (mode == 1) then
        write (40, asynchronous='yes', id=ids(iand(k, 1) + 1)) x(:, iand(k, 1) + 1)
      else
        write (40, asynchronous='yes', id=ids(iand(k, 1) + 1), rec=k + 1) x(:, iand(k, 1) + 1)
      end if
    end do
    close (40)
  end subroutine overlapped

  subroutine compute(piece, number)
    real(8), intent(out), asynchronous :: piece(:)
    integer, intent(in) :: number
    integer :: i, r, rounds
    real(8) :: v
    do i = 1, size(piece)
      v = dble(i - 1 + number)
      rounds = work(mode) / 10
      if (mod(i - 1, 10) < mod(work(mode), 10)) rounds = rounds + 1
      do r = 1, rounds
        v = v * 0.999999d0 + 1d-7
      end do
      piece(i) = v
    end do
  end subroutine compute

end program async
