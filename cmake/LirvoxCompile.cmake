# How every target of this project is compiled: lirvox_compile_options(target).

function(lirvox_compile_options target)
  target_compile_features(${target} PRIVATE cxx_std_20)
  set_target_properties(${target} PROPERTIES
    CXX_EXTENSIONS OFF
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    POSITION_INDEPENDENT_CODE ON)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion
    # A fused multiply-add rounds once where two operations round twice: with
    # contraction on, the same audio would give other hashes on another processor.
    -ffp-contract=off
    # GCC 12 sees overlapping copies in plain concatenations of strings (its bug 105651).
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
    $<$<BOOL:${LIRVOX_WARNINGS_AS_ERRORS}>:-Werror>)
  if(LIRVOX_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=${LIRVOX_SANITIZE} -fno-omit-frame-pointer
      -fno-sanitize-recover=all)
    if(LIRVOX_SANITIZE STREQUAL "thread")
      # Asio has fences, which ThreadSanitizer does not see; it sees the locks beside them.
      target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-tsan>)
    endif()
    target_link_options(${target} PUBLIC -fsanitize=${LIRVOX_SANITIZE})
  endif()
endfunction()
