#include "matrix/product_kernels_impl.h"
#include "platform/simd/avx2.h"

namespace qmml::matrix {

constinit const ProductKernels s_product_avx2 = ProductImplementation<platform::Avx2Lane>::kernels;

} // namespace qmml::matrix
