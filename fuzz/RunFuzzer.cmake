# Runs one fuzz target for SECONDS from a fresh work corpus, reading the regressions and the
# seeds first, and says how many inputs it ran. A finding (a crash, a leak, a broken
# promise) fails the test; libFuzzer writes the input to WORK/findings/.
# Called as: cmake -DPROGRAM=<target> -DSECONDS=<n> -DWORK=<dir> -DSEEDS=<dirs> -P ...
file(REMOVE_RECURSE "${WORK}/corpus")
file(MAKE_DIRECTORY "${WORK}/corpus" "${WORK}/findings")
set(seed_dirs)
foreach(dir IN LISTS SEEDS)
  if(IS_DIRECTORY "${dir}")
    list(APPEND seed_dirs "${dir}")
  endif()
endforeach()
execute_process(COMMAND ${PROGRAM} -max_total_time=${SECONDS} -timeout=20 -rss_limit_mb=2048
                        -print_final_stats=1 -artifact_prefix=${WORK}/findings/
                        ${WORK}/corpus ${seed_dirs}
                RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err)
string(REGEX MATCH "stat::number_of_executed_units: [0-9]+" runs "${err}")
string(REGEX MATCH "Done [0-9]+ runs in [0-9]+ second" done "${err}")
message("${PROGRAM}: ${done}; ${runs}")
if(NOT status EQUAL 0)
  message(FATAL_ERROR "exit status ${status}\n${err}")
endif()
