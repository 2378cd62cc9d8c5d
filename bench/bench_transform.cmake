# libjpeg-turbo's AVX2 block kernels are not exported by its shared library;
# the static archive, linked after it, supplies only those objects.
if(EXISTS /usr/lib/x86_64-linux-gnu/libjpeg.a AND TURBOJPEG_FOUND)
  target_link_libraries(${name} PRIVATE /usr/lib/x86_64-linux-gnu/libjpeg.a)
endif()
