# The codec of the command-line tool, without its image files.
target_sources(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tools/jpeg/markers.cpp ${PROJECT_SOURCE_DIR}/tools/jpeg/encoder.cpp
               ${PROJECT_SOURCE_DIR}/tools/jpeg/decoder.cpp ${PROJECT_SOURCE_DIR}/tools/jpeg/decrows.cpp)
target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tools/jpeg)
