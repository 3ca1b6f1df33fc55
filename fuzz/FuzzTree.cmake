# The fuzz targets need clang and its libFuzzer, while the main build may use gcc: the main
# build makes a tree of its own for them with clang (fuzz-tree/, the libraries they reach
# and nothing else, under ASan and UBSan), and CTest runs each target for a bounded time
# under the label "fuzz". Only the build without sanitizers does this, as the fuzz tree
# has its own; the ASan build would only double the cost.
option(VEK_FUZZ "Build the fuzz targets with clang in a tree of their own and run them" ON)
if(NOT VEK_FUZZ OR VEK_SANITIZE OR NOT TARGET mfa-host)
  return()
endif()
find_program(VEK_FUZZ_CXX NAMES clang++ clang++-14)
if(VEK_FUZZ_CXX)
  execute_process(COMMAND ${VEK_FUZZ_CXX} -print-file-name=libclang_rt.fuzzer-${CMAKE_SYSTEM_PROCESSOR}.a
                  OUTPUT_VARIABLE fuzzer_library OUTPUT_STRIP_TRAILING_WHITESPACE)
endif()
if(NOT VEK_FUZZ_CXX OR NOT EXISTS "${fuzzer_library}")
  message(STATUS "Fuzz targets: not built, no clang with libFuzzer (scripts/setup-deps.sh installs them)")
  return()
endif()

include(ExternalProject)
set(fuzz_tree ${CMAKE_BINARY_DIR}/fuzz-tree)
set(fuzz_targets fuzz_scenario_loader fuzz_commands)
# The targets alone, not the whole tree (no daemon program, no host program). Under make the
# tree's build shares the main build's job slots.
if(CMAKE_GENERATOR MATCHES "Make")
  set(fuzz_build_command $(MAKE) ${fuzz_targets})
else()
  set(fuzz_build_command ${CMAKE_COMMAND} --build <BINARY_DIR> --target ${fuzz_targets})
endif()
ExternalProject_Add(fuzz-tree
  SOURCE_DIR ${PROJECT_SOURCE_DIR}
  BINARY_DIR ${fuzz_tree}
  # -O1 with line tables: enough speed to fuzz, quicker to build, and reports that name
  # lines; the standard library checks its indices and iterators.
  CMAKE_ARGS -DCMAKE_CXX_COMPILER=${VEK_FUZZ_CXX} -DCMAKE_BUILD_TYPE=RelWithDebInfo
             "-DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O1 -gline-tables-only -D_GLIBCXX_ASSERTIONS"
             -DVEK_FUZZ_TREE=ON -DVEK_SANITIZE=ON -DVEK_BENCH=OFF
             # Warnings are the main build's business; clang's set differs.
             -DVEK_WERROR=OFF
  BUILD_COMMAND ${fuzz_build_command}
  INSTALL_COMMAND ""
  BUILD_ALWAYS ON)

# Seeds: the scenarios themselves for the loader, and the command logs they produce (made
# by the test fuzz.seeds before the targets run) for the commands.
set(fuzz_work ${CMAKE_BINARY_DIR}/fuzz)
file(GLOB fuzz_log_scenarios ${PROJECT_SOURCE_DIR}/tests/scenarios/*.yaml
     ${PROJECT_SOURCE_DIR}/examples/*.yaml)
add_test(NAME fuzz.seeds
         COMMAND ${CMAKE_COMMAND} -DPROGRAM=$<TARGET_FILE:mfa-host> -DOUT=${fuzz_work}/seeds/commands
                 "-DSCENARIOS=${fuzz_log_scenarios}" -P ${PROJECT_SOURCE_DIR}/fuzz/CommandLogSeeds.cmake)
set_tests_properties(fuzz.seeds PROPERTIES LABELS fuzz FIXTURES_SETUP fuzz-seeds TIMEOUT 120)

# Seconds each target runs; the whole run of the label stays near a minute.
set(VEK_FUZZ_SECONDS 25 CACHE STRING "Seconds each fuzz target runs under CTest")
function(vek_fuzz_test name target regressions)
  add_test(NAME fuzz.${name}
           COMMAND ${CMAKE_COMMAND} -DPROGRAM=${fuzz_tree}/fuzz/${target}
                   -DSECONDS=${VEK_FUZZ_SECONDS} -DWORK=${fuzz_work}/${name}
                   "-DSEEDS=${PROJECT_SOURCE_DIR}/fuzz/regressions/${regressions};${ARGN}"
                   -P ${PROJECT_SOURCE_DIR}/fuzz/RunFuzzer.cmake)
  set_tests_properties(fuzz.${name} PROPERTIES LABELS fuzz TIMEOUT 300)
endfunction()
vek_fuzz_test(scenario-loader fuzz_scenario_loader loader ${PROJECT_SOURCE_DIR}/tests/scenarios
              ${PROJECT_SOURCE_DIR}/examples ${PROJECT_SOURCE_DIR}/tests/daemon)
vek_fuzz_test(commands fuzz_commands commands ${fuzz_work}/seeds/commands)
set_tests_properties(fuzz.commands PROPERTIES FIXTURES_REQUIRED fuzz-seeds)
