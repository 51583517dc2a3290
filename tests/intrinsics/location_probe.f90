! The other side of the location search comparison: MAXLOC, MINLOC and FINDLOC of fixed
! arrays (ties, NaNs, signed zeros, blanks, sections, masks, DIM and BACK), one line per
! call: a name, then the subscripts.
program location_probe
  use, intrinsic :: ieee_arithmetic
  implicit none
  real(8) :: a(4, 3), nan, all_nan(3), empty(0)
  integer :: k(7), cube(2, 3, 2), i
  character(len=3) :: words(5)
  logical :: truths(5), positive(4, 3)

  nan = ieee_value(nan, ieee_quiet_nan)
  a = reshape([2.0d0, -1.0d0, nan, 2.0d0, &
               -0.0d0, 7.0d0, 0.0d0, -3.0d0, &
               7.0d0, nan, 1.0d0, -3.0d0], [4, 3])
  all_nan = nan
  k = [3, 9, -2, 9, 0, -2, 4]
  cube = reshape([(mod(i * 5, 7), i = 1, 12)], [2, 3, 2])
  words = ['ab ', 'abc', 'zz ', 'ab ', '   ']
  truths = [.false., .true., .false., .true., .false.]
  positive = a > 0

  call show('maxloc_a', maxloc(a))
  call show('minloc_a', minloc(a))
  call show('maxloc_a_back', maxloc(a, back=.true.))
  call show('minloc_a_back', minloc(a, back=.true.))
  call show('maxloc_a_dim1', maxloc(a, dim=1))
  call show('maxloc_a_dim2', maxloc(a, dim=2))
  call show('minloc_a_dim2_back', minloc(a, dim=2, back=.true.))
  call show('maxloc_a_mask', maxloc(a, mask=positive))
  call show('minloc_a_mask_dim1', minloc(a, dim=1, mask=positive))
  call show('maxloc_a_reversed', maxloc(a(4:1:-1, :)))
  call show('maxloc_a_rows', maxloc(a(1:4:2, 3:1:-1), dim=1))
  call show('findloc_a_2', findloc(a, 2.0d0))
  call show('findloc_a_2_back', findloc(a, 2.0d0, back=.true.))
  call show('findloc_a_zero', findloc(a, 0.0d0))
  call show('findloc_a_7_dim2', findloc(a, 7.0d0, dim=2))
  call show('findloc_a_nan', findloc(a, nan))
  call show('maxloc_all_nan', maxloc(all_nan))
  call show('maxloc_empty', maxloc(empty))
  call show('maxloc_masked_out', maxloc(a, mask=.false.))
  call show('maxloc_k', maxloc(k))
  call show('maxloc_k_back', maxloc(k, back=.true.))
  call show('minloc_k_back', minloc(k, back=.true.))
  call show('findloc_k', findloc(k, -2))
  call show('findloc_k_back', findloc(k, -2, back=.true.))
  call show('maxloc_cube', maxloc(cube))
  call show('maxloc_cube_dim3', reshape(maxloc(cube, dim=3), [6]))
  call show('minloc_cube_dim2_back', reshape(minloc(cube, dim=2, back=.true.), [4]))
  call show('maxloc_words', maxloc(words))
  call show('minloc_words', minloc(words))
  call show('findloc_words_ab', findloc(words, 'ab'))
  call show('findloc_words_ab_back', findloc(words, 'ab', back=.true.))
  call show('findloc_words_blank', findloc(words, ''))
  call show('findloc_truths', findloc(truths, .true.))
  call show('findloc_truths_back', findloc(truths, .true., back=.true.))
contains
  subroutine show(name, values)
    character(*), intent(in) :: name
    integer, intent(in) :: values(:)
    print '(a, *(1x, i0))', name, values
  end subroutine show
end program location_probe
