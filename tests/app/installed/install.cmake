# Installs the build tree and moves what was installed, so that nothing can rely on the place.
file(REMOVE_RECURSE ${STAGED} ${MOVED})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${STAGED} OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
file(RENAME ${STAGED} ${MOVED})
