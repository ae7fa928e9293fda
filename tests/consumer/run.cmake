# Installs the build in BUILD into a folder below WORK, builds the consumer against it and runs it.
function(must)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
endfunction()

file(REMOVE_RECURSE "${WORK}")
must(${CMAKE_COMMAND} --install "${BUILD}" --prefix "${WORK}/installed")
must(${CMAKE_COMMAND} -S "${CMAKE_CURRENT_LIST_DIR}" -B "${WORK}/build" -G Ninja
  "-DCMAKE_PREFIX_PATH=${WORK}/installed" "-DCMAKE_CXX_COMPILER=${COMPILER}")
must(${CMAKE_COMMAND} --build "${WORK}/build")
must(${CMAKE_COMMAND} -E env "LIRVOX_CACHES_DIR=${WORK}/caches" "${WORK}/build/consumer")
