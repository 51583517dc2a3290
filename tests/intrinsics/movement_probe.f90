! The other side of the data-movement comparison: CSHIFT, EOSHIFT, TRANSPOSE, RESHAPE,
! SPREAD, PACK, UNPACK, MERGE and TRANSFER of fixed arrays, one line per call: a name, then
! the result's elements in array element order.
program movement_probe
  implicit none
  integer :: m(3, 4), i
  logical :: mask(3, 4)
  character(len=2) :: words(3)

  m = reshape([(i, i = 1, 12)], [3, 4])
  mask = mod(m, 3) == 1
  words = ['ab', 'cd', 'ef']

  call show('cshift_1', reshape(cshift(m, 1), [12]))
  call show('cshift_dim2', reshape(cshift(m, -1, dim=2), [12]))
  call show('cshift_array', reshape(cshift(m, [1, -2, 3, 0], dim=1), [12]))
  call show('cshift_array_dim2', reshape(cshift(m, [5, -1, 2], dim=2), [12]))
  call show('eoshift_2', reshape(eoshift(m, 2), [12]))
  call show('eoshift_boundary_dim2', reshape(eoshift(m, -1, boundary=99, dim=2), [12]))
  call show('eoshift_arrays', reshape(eoshift(m, [1, 0, -1, 4], boundary=[7, 8, 9, 10]), [12]))
  call show('transpose', reshape(transpose(m), [12]))
  call show('reshape_pad', reshape(reshape([1, 2, 3, 4, 5], [2, 4], pad=[0, -1]), [8]))
  call show('reshape_order', reshape(reshape([(i, i = 1, 6)], [2, 3], order=[2, 1]), [6]))
  call show('reshape_order3', reshape(reshape([(i, i = 1, 24)], [2, 3, 4], order=[3, 1, 2]), [24]))
  call show('spread_1', reshape(spread([1, 2, 3], 1, 2), [6]))
  call show('spread_2', reshape(spread([1, 2, 3], 2, 2), [6]))
  call show('spread_none', reshape(spread([1, 2, 3], 2, -1), [0]))
  call show('spread_scalar', spread(5, 1, 3))
  call show('pack', pack(m, m > 5))
  call show('pack_vector', pack(m, m > 5, [(-i, i = 1, 10)]))
  call show('pack_scalar_mask', pack(m(2, :), .true.))
  call show('unpack_scalar', reshape(unpack([10, 20, 30, 40], mask, 0), [12]))
  call show('unpack_field', reshape(unpack([10, 20, 30, 40], mask, m), [12]))
  call show('merge', reshape(merge(m, -m, mod(m, 2) == 0), [12]))
  call show('merge_scalar', reshape(merge(m, 0, mask), [12]))
  call show('transfer', transfer([1, 2, 3, 4], [0_8]))
  call show('transfer_size', transfer(m, [0_8], 3))
  call words_line('cshift_words', cshift(words, 1))
  call words_line('eoshift_words', eoshift(words, 1))
  call words_line('eoshift_words_back', eoshift(words, -2, boundary='zz'))
contains
  subroutine show(name, values)
    character(*), intent(in) :: name
    class(*), intent(in) :: values(:)
    select type (values)
    type is (integer)
      print '(a, *(1x, i0))', name, values
    type is (integer(8))
      print '(a, *(1x, i0))', name, values
    end select
  end subroutine show
  subroutine words_line(name, values)
    character(*), intent(in) :: name
    character(len=2), intent(in) :: values(:)
    print '(a, 3(1x, "[", a, "]"))', name, values
  end subroutine words_line
end program movement_probe
