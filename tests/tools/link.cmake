# The codec's sources go straight into the test program, over the static library.
target_sources(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tools/jpeg/markers.cpp ${PROJECT_SOURCE_DIR}/tools/jpeg/encoder.cpp
               ${PROJECT_SOURCE_DIR}/tools/jpeg/decoder.cpp ${PROJECT_SOURCE_DIR}/tools/jpeg/decrows.cpp ${PROJECT_SOURCE_DIR}/tools/jpeg/imageio.cpp)
target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tools/jpeg ${PROJECT_SOURCE_DIR}/tools)
target_link_libraries(${name} PRIVATE PkgConfig::LIBPNG)
