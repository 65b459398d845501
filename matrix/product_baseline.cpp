#include "matrix/product_kernels_impl.h"
#include "platform/simd/baseline.h"

namespace qmml::matrix {

constinit const ProductKernels s_product_baseline = ProductImplementation<platform::BaselineLane>::kernels;

} // namespace qmml::matrix
