# Writes the command log of each scenario to OUT, one file per scenario: the seeds of the
# commands target. Called as: cmake -DPROGRAM=<mfa-host> -DOUT=<dir> -DSCENARIOS=<files> -P ...
file(REMOVE_RECURSE "${OUT}")
file(MAKE_DIRECTORY "${OUT}")
foreach(scenario IN LISTS SCENARIOS)
  get_filename_component(name "${scenario}" NAME_WE)
  get_filename_component(folder "${scenario}" DIRECTORY)
  get_filename_component(folder "${folder}" NAME)
  execute_process(COMMAND ${PROGRAM} run ${scenario} --log ${OUT}/${folder}-${name}.jsonl
                  RESULT_VARIABLE status OUTPUT_QUIET ERROR_VARIABLE err TIMEOUT 60)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${scenario}: exit status ${status}\n${err}")
  endif()
endforeach()
