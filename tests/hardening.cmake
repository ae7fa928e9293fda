# Looks in a program for the traces that hardening leaves: FILE, by way of READELF.
execute_process(COMMAND ${READELF} --wide --file-header --segments --dynamic --dyn-syms --notes
  "${FILE}" OUTPUT_VARIABLE found COMMAND_ERROR_IS_FATAL ANY)

set(traces
  "position independent=Type: +DYN"
  "addresses bound at start=FLAGS_1.* NOW"
  "which are read-only then=GNU_RELRO"
  "no code on the stack=GNU_STACK [^\n]* RW "
  "guarded stack frames=__stack_chk_fail"
  "fortified functions=__[a-z]+_chk@")
foreach(trace IN LISTS traces)
  string(REGEX MATCH "^([^=]+)=(.+)$" unused "${trace}")
  set(name "${CMAKE_MATCH_1}")
  if(NOT found MATCHES "${CMAKE_MATCH_2}")
    message(SEND_ERROR "${FILE}: ${name} missing")
  endif()
endforeach()
