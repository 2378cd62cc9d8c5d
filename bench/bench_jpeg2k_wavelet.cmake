# OpenJPEG's DWT entry points come from its static archive, through the
# tests' peer plumbing.
if(EXISTS /usr/lib/x86_64-linux-gnu/libopenjp2.a)
  target_sources(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests/support/jpeg2k_wavelet_peer.cpp)
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_compile_definitions(${name} PRIVATE VQCJ_HAVE_OPJ_DWT=1)
  target_link_libraries(${name} PRIVATE /usr/lib/x86_64-linux-gnu/libopenjp2.a pthread m)
endif()
