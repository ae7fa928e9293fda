# How every target of this project is compiled: lirvox_compile_options(target).

include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)

# What turns a mistake in memory into the end of the process, or at least keeps it from being
# of use to somebody. Only in builds that optimise, without which the checks cost much and
# the fortified functions do nothing.
function(lirvox_harden target)
  set(flags -fstack-protector-strong -fstack-clash-protection -U_FORTIFY_SOURCE
    -D_FORTIFY_SOURCE=$<IF:$<VERSION_LESS:$<CXX_COMPILER_VERSION>,12>,2,3>)
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64|i[3-6]86")
    list(APPEND flags -fcf-protection=full)
  elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "aarch64|arm64")
    list(APPEND flags -mbranch-protection=standard)
  endif()
  set(optimised $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)
  target_compile_options(${target} PRIVATE "$<${optimised}:${flags}>")
  # Nothing of it is handed on: a static library leaves the link to its host.
  target_link_options(${target} PRIVATE "$<${optimised}:LINKER:-z,relro,-z,now>")
endfunction()

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
    # What lib/platform/Mutex.h says of locks.
    $<$<CXX_COMPILER_ID:Clang,AppleClang>:-Wthread-safety;-Wthread-safety-beta>
    $<$<BOOL:${LIRVOX_WARNINGS_AS_ERRORS}>:-Werror>)
  if(LIRVOX_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=${LIRVOX_SANITIZE} -fno-omit-frame-pointer
      -fno-sanitize-recover=all)
    if(LIRVOX_SANITIZE STREQUAL "thread")
      # Asio has fences, which ThreadSanitizer does not see; it sees the locks beside them.
      target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-tsan>)
    endif()
    target_link_options(${target} PUBLIC -fsanitize=${LIRVOX_SANITIZE})
  elseif(LIRVOX_HARDEN)
    lirvox_harden(${target})
  endif()
endfunction()
