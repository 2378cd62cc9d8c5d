# The entropy benchmark takes its files and coefficients from the tests'
# libjpeg-turbo plumbing.
if(TARGET vqcj_photos AND LIBJPEG_FOUND)
  target_sources(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests/support/jpeg_streams.cpp)
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
endif()
