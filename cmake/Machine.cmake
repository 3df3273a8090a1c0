# Row numbers, sizes of files and hashes take 64 bits; no 32-bit system is tested.
if(NOT CMAKE_SIZEOF_VOID_P EQUAL 8)
  message(FATAL_ERROR "Velmorak needs a 64-bit system; ${CMAKE_CXX_COMPILER} makes programs for one of "
    "${CMAKE_SIZEOF_VOID_P}-byte addresses.")
endif()
