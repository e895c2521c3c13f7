# cmake -DSCRIPT= -DMADE= -DKEPT= -P check_asset.cmake   fails when the script makes another file than the one that is kept.
execute_process(COMMAND python3 -B ${SCRIPT} ${MADE} COMMAND_ERROR_IS_FATAL ANY)
file(SHA256 ${MADE} made)
file(SHA256 ${KEPT} kept)
file(REMOVE ${MADE})
if(NOT made STREQUAL kept)
  message(FATAL_ERROR "${KEPT} is not what ${SCRIPT} makes: run it again")
endif()
