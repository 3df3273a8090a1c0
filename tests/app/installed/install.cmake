# Installs the build tree and moves the installation, so that nothing can depend on its path.
file(REMOVE_RECURSE ${STAGED} ${MOVED})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${STAGED} OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
file(RENAME ${STAGED} ${MOVED})
