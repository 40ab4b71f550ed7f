# Installs the built library into a fresh prefix, builds the consumer project
# against it with find_package, runs it, and checks the pkg-config file.
file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "command failed (${rc}): ${ARGN}\n${out}\n${err}")
  endif()
  message(STATUS "${out}")
endfunction()

run(${CMAKE_COMMAND} --install ${BINARY_DIR} --prefix ${prefix})
run(${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${WORK_DIR}/build -G ${GENERATOR}
    -DCMAKE_CXX_COMPILER=${CXX_COMPILER} -DCMAKE_PREFIX_PATH=${prefix})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/build)
run(${WORK_DIR}/build/consumer)

find_program(PKG_CONFIG pkg-config)
if(PKG_CONFIG)
  file(GLOB_RECURSE pc_files ${prefix}/*/tovfoundation.pc)
  list(GET pc_files 0 pc_file)
  get_filename_component(pc_dir ${pc_file} DIRECTORY)
  set(ENV{PKG_CONFIG_PATH} ${pc_dir})
  execute_process(COMMAND ${PKG_CONFIG} --libs --cflags tovfoundation
    RESULT_VARIABLE rc OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT rc EQUAL 0 OR NOT flags MATCHES "-ltovfoundation")
    message(FATAL_ERROR "pkg-config does not describe the library: ${flags}")
  endif()
  separate_arguments(flag_list UNIX_COMMAND "${flags}")
  run(${CXX_COMPILER} ${CONSUMER_DIR}/main.cpp -o ${WORK_DIR}/consumer-pc ${flag_list})
  get_filename_component(libdir ${pc_dir} DIRECTORY)
  set(ENV{LD_LIBRARY_PATH} ${libdir})
  run(${WORK_DIR}/consumer-pc)
endif()
