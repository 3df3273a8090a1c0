# gtkmm-3.0 and goocanvasmm-2.0 as one target. Debian's goocanvasmm lists an include folder that does not exist, which
# an imported target rejects; it is filtered out.
find_package(PkgConfig REQUIRED)
pkg_check_modules(VELMORAK_TOOLKIT REQUIRED gtkmm-3.0>=3.24 goocanvasmm-2.0>=1.90 gthread-2.0)
list(FILTER VELMORAK_TOOLKIT_INCLUDE_DIRS EXCLUDE REGEX "/lib/.*/goocanvasmm-2.0/include$")

add_library(velmorak_toolkit INTERFACE)
target_include_directories(velmorak_toolkit SYSTEM INTERFACE ${VELMORAK_TOOLKIT_INCLUDE_DIRS})
target_link_directories(velmorak_toolkit INTERFACE ${VELMORAK_TOOLKIT_LIBRARY_DIRS})
target_link_libraries(velmorak_toolkit INTERFACE ${VELMORAK_TOOLKIT_LIBRARIES})
