# Installs the build into a scratch prefix, then uses it the two ways a
# consumer would: a C99 program through pkg-config, and a CMake project
# through find_package(vqcj).
file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "failed (${rc}): ${ARGN}\n${out}\n${err}")
  endif()
  set(last_output "${out}" PARENT_SCOPE)
endfunction()

run(${CMAKE_COMMAND} --install ${BINARY_DIR} --prefix ${prefix})
file(GLOB libdirs ${prefix}/lib*)
foreach(d ${libdirs})
  if(EXISTS ${d}/pkgconfig/vqcj.pc)
    set(libdir ${d})
  endif()
endforeach()
if(NOT libdir)
  message(FATAL_ERROR "vqcj.pc not installed")
endif()
foreach(f libvqcj.so.7 libvqccore.so.7 libvqcj.a)
  if(NOT EXISTS ${libdir}/${f})
    message(FATAL_ERROR "${f} not installed")
  endif()
endforeach()

# C99 through pkg-config, with the strictest flags.
set(ENV{PKG_CONFIG_PATH} ${libdir}/pkgconfig)
run(pkg-config --cflags --libs vqcj)
string(STRIP "${last_output}" flags)
separate_arguments(flags UNIX_COMMAND "${flags}")
run(cc -std=c99 -Wall -Werror -pedantic ${SOURCE_DIR}/tests/install/consumer.c ${flags}
    -Wl,-rpath,${libdir} -o ${WORK_DIR}/consumer_pc)
run(${WORK_DIR}/consumer_pc)
message(STATUS "pkg-config consumer: ${last_output}")

# The static archive through pkg-config --static, as a C program links it.
run(pkg-config --static --libs vqcj)
string(STRIP "${last_output}" flags)
string(REPLACE "-lvqcj " "${libdir}/libvqcj.a " flags "${flags} ")
separate_arguments(flags UNIX_COMMAND "${flags}")
run(cc -std=c99 -Wall -Werror -pedantic ${SOURCE_DIR}/tests/install/consumer.c -I${prefix}/include ${flags}
    -Wl,-rpath,${libdir} -o ${WORK_DIR}/consumer_pc_static)
run(${WORK_DIR}/consumer_pc_static)
message(STATUS "pkg-config --static consumer: ${last_output}")

# CMake package from a C-only project, shared and static.
run(${CMAKE_COMMAND} -S ${SOURCE_DIR}/tests/install/consumer -B ${WORK_DIR}/consumer
    -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_BUILD_TYPE=Release -DCMAKE_C_FLAGS=-std=c99\ -Wall\ -Werror\ -pedantic)
run(${CMAKE_COMMAND} --build ${WORK_DIR}/consumer)
run(${WORK_DIR}/consumer/consumer_shared)
message(STATUS "CMake consumer (shared): ${last_output}")
run(${WORK_DIR}/consumer/consumer_static)
message(STATUS "CMake consumer (static): ${last_output}")
