// The table of powers of five behind the wide-product conversion.
#include "convert/power_product.h"

namespace power_product {

#include "convert/power_of_five_table.inc"

}  // namespace power_product
