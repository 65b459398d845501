#include "matrix/product_kernels_impl.h"
#include "platform/simd/avx512.h"

namespace qmml::matrix {

constinit const ProductKernels s_product_avx512 = ProductImplementation<platform::Avx512Lane>::kernels;

} // namespace qmml::matrix
