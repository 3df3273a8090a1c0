# All our targets link this one, so that they have the same warnings and sanitizers.
add_library(velmorak_warnings INTERFACE)
target_compile_options(velmorak_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion
                                                   $<$<CXX_COMPILER_ID:GNU>:-Wshadow=local>
                                                   $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>)
# False positives of GCC 12 with optimisation: overlapping copies, and copies beyond the end, in the concatenation of a literal
# and a string.
target_compile_options(velmorak_warnings INTERFACE
                       $<$<CONFIG:Release>:-Wno-restrict>
                       "$<$<AND:$<CONFIG:Release>,$<CXX_COMPILER_ID:GNU>>:-Wno-stringop-overflow;-Wno-array-bounds>")
if(VELMORAK_WERROR)
  target_compile_options(velmorak_warnings INTERFACE -Werror)
endif()
if(VELMORAK_SANITIZE)
  # False positive of GCC 12 with sanitizers: uninitialised members of the standard library.
  target_compile_options(velmorak_warnings INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  target_compile_options(velmorak_warnings INTERFACE -fsanitize=${VELMORAK_SANITIZE} -fno-omit-frame-pointer
                                                     -fno-sanitize-recover=all)
  target_link_options(velmorak_warnings INTERFACE -fsanitize=${VELMORAK_SANITIZE})
endif()
