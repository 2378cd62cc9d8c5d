# The interop tests drive libjpeg-turbo's own API (jpeg_read_coefficients).
if(TARGET PkgConfig::LIBJPEG)
  target_link_libraries(${name} PRIVATE PkgConfig::LIBJPEG)
endif()
