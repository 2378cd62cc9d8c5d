# libjpeg-turbo's AVX2 colour conversion and down- and up-sampling kernels
# from Debian's static archive, as the peer of the MCU forms. Its SIMD objects
# stand alone, so only they are pulled from it, beside the shared libjpeg.
if(EXISTS /usr/lib/x86_64-linux-gnu/libjpeg.a AND TURBOJPEG_FOUND)
  target_link_libraries(${name} PRIVATE /usr/lib/x86_64-linux-gnu/libjpeg.a)
  target_compile_definitions(${name} PRIVATE VQCJ_HAVE_JSIMD=1)
endif()
