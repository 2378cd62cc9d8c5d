# OpenJPEG's DWT entry points are internal to its shared library; the
# static archive has them.
if(EXISTS /usr/lib/x86_64-linux-gnu/libopenjp2.a)
  target_link_libraries(${name} PRIVATE /usr/lib/x86_64-linux-gnu/libopenjp2.a pthread m)
endif()
