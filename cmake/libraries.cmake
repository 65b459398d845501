# The shared and the static library from the common objects.
add_library(qmml SHARED $<TARGET_OBJECTS:qmml_objects>)
add_library(qmml_static STATIC $<TARGET_OBJECTS:qmml_objects>)
foreach(library IN ITEMS qmml qmml_static)
    target_include_directories(${library} INTERFACE
        $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
    target_compile_features(${library} INTERFACE cxx_std_17)
endforeach()
target_link_libraries(qmml PRIVATE $<BUILD_INTERFACE:qmml_options>)
set_target_properties(qmml PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION 1)
set_target_properties(qmml_static PROPERTIES OUTPUT_NAME qmml EXPORT_NAME static)
add_library(qmml::qmml ALIAS qmml)
add_library(qmml::static ALIAS qmml_static)
