# One target that every target of ours links: warnings and sanitizers are the same everywhere.
add_library(velmorak_warnings INTERFACE)
target_compile_options(velmorak_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion
                                                   $<$<CXX_COMPILER_ID:GNU>:-Wshadow=local>)
# GCC 12 sees overlapping copies where a literal and a string are joined, when it optimises; there are none.
target_compile_options(velmorak_warnings INTERFACE $<$<CONFIG:Release>:-Wno-restrict>)
if(VELMORAK_WERROR)
  target_compile_options(velmorak_warnings INTERFACE -Werror)
endif()
if(VELMORAK_SANITIZE)
  # With its checks in between, GCC 12 takes members of the standard library for uninitialised; the checks know better.
  target_compile_options(velmorak_warnings INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  target_compile_options(velmorak_warnings INTERFACE -fsanitize=${VELMORAK_SANITIZE} -fno-omit-frame-pointer
                                                     -fno-sanitize-recover=all)
  target_link_options(velmorak_warnings INTERFACE -fsanitize=${VELMORAK_SANITIZE})
endif()
