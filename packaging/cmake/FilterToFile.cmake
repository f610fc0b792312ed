# Runs PROGRAM (with ARGS) on INPUT and writes what it prints to OUTPUT, for the build's
# filters (scdoc, gzip), so no shell redirection is needed. The output appears whole or not
# at all.
#   cmake -DPROGRAM=scdoc -DINPUT=in -DOUTPUT=out [-DARGS=-9n] -P FilterToFile.cmake
execute_process(COMMAND ${PROGRAM} ${ARGS} INPUT_FILE "${INPUT}" OUTPUT_FILE "${OUTPUT}.part"
                RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  file(REMOVE "${OUTPUT}.part")
  message(FATAL_ERROR "${PROGRAM} failed on ${INPUT}: ${result}")
endif()
file(RENAME "${OUTPUT}.part" "${OUTPUT}")
