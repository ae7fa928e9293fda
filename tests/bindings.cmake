# Tests of the library from other languages.
add_executable(CInterfaceHost CInterfaceHost.c)
set_target_properties(CInterfaceHost PROPERTIES C_STANDARD 11 C_STANDARD_REQUIRED ON)
target_compile_options(CInterfaceHost PRIVATE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
target_link_libraries(CInterfaceHost PRIVATE lirvox_c Threads::Threads m)
if(LIRVOX_SANITIZE)
  # The sanitizer's part for C++ comes with the compiler of the library.
  set_target_properties(CInterfaceHost PROPERTIES LINKER_LANGUAGE CXX)
endif()

lirvox_test(BindingsTest PROGRAM DEFINITIONS LIRVOX_C_HOST="$<TARGET_FILE:CInterfaceHost>")
add_dependencies(BindingsTest CInterfaceHost)
if(NOT LIRVOX_SANITIZE)
  target_compile_definitions(BindingsTest PRIVATE
    LIRVOX_C_LIBRARY="$<TARGET_FILE:lirvox_c>"
    LIRVOX_PYTHON_EXAMPLE="${PROJECT_SOURCE_DIR}/examples/python/recognize.py")
endif()
