# Uses the library in one of the ways in which projects do, below the folder WORK.
#
#   WAY=static  installed from the build in BUILD: through find_package, and through pkg-config
#               with the compiler CLANG, if there is one
#   WAY=shared  built along with a project from SOURCE, then installed from there and used
#               through find_package; what it shows must be what the symbol files list
cmake_minimum_required(VERSION 3.25)

function(must)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
endfunction()

function(build project folder)
  must(${CMAKE_COMMAND} -S "${project}" -B "${folder}" -G Ninja "-DCMAKE_CXX_COMPILER=${COMPILER}"
    "-DCMAKE_CXX_COMPILER_LAUNCHER=${LAUNCHER}" ${ARGN})
  must(${CMAKE_COMMAND} --build "${folder}")
endfunction()

function(run program)
  must(${CMAKE_COMMAND} -E env "LIRVOX_CACHES_DIR=${WORK}/caches" "${program}")
endfunction()

# Virtual tables, and weak symbols, as templates have, come and go with the compiler.
function(compare_symbols library file)
  cmake_path(GET file FILENAME name)
  execute_process(COMMAND_ERROR_IS_FATAL ANY
    COMMAND nm -DC --defined-only "${library}"
    COMMAND sed -n "s/^[^ ]* [TDBR] //p"
    COMMAND grep -Ev "^(vtable|typeinfo|typeinfo name) for "
    COMMAND env LC_ALL=C sort -u
    OUTPUT_FILE "${WORK}/${name}")
  execute_process(COMMAND diff -u "${file}" "${WORK}/${name}" RESULT_VARIABLE differs)
  if(differs)
    message(FATAL_ERROR "The interface has changed. If that is meant: cp ${WORK}/${name} ${file}")
  endif()
endfunction()

set(here "${CMAKE_CURRENT_LIST_DIR}")
set(installed "${WORK}/installed")
file(REMOVE_RECURSE "${installed}" "${WORK}/build")
if(WAY STREQUAL "shared")
  build("${here}/embedding" "${WORK}/embedding" "-DLIRVOX_SOURCE=${SOURCE}")
  run("${WORK}/embedding/consumer")
  set(BUILD "${WORK}/embedding")
endif()
must(${CMAKE_COMMAND} --install "${BUILD}" --prefix "${installed}")
build("${here}" "${WORK}/build" "-DCMAKE_PREFIX_PATH=${installed}")
run("${WORK}/build/consumer")

if(WAY STREQUAL "shared")
  compare_symbols("${installed}/${LIBDIR}/liblirvox.so" "${SOURCE}/lib/lirvox.symbols")
  return()
endif()
run("${WORK}/build/consumer_c")
compare_symbols("${installed}/${LIBDIR}/liblirvox_c.so" "${SOURCE}/bindings/c/lirvox_c.symbols")
if(CLANG)
  must(sh -c "export PKG_CONFIG_PATH='${installed}/${LIBDIR}/pkgconfig'
    '${CLANG}' -std=c++17 '${here}/main.cpp' -o '${WORK}/build/by-pkg-config' \
      $(pkg-config --cflags --libs lirvox)")
  run("${WORK}/build/by-pkg-config")
endif()
