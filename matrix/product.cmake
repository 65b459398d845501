target_sources(qmml_objects PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/product.cpp)
qmml_add_levels(product)
