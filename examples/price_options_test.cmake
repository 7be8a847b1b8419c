# Runs price_options on good and bad files.
function(expect status pattern)
  execute_process(COMMAND ${PROGRAM} ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output
                  ERROR_VARIABLE output)
  if(NOT result EQUAL status OR NOT output MATCHES "${pattern}")
    message(FATAL_ERROR "price_options ${ARGN}: status ${result} and\n${output}\n"
                        "instead of ${status} and ${pattern}")
  endif()
endfunction()

function(expect_of_rows status pattern)
  set(file ${SCRATCH}/options_test.csv)
  list(JOIN ARGN "\n" rows)
  file(WRITE ${file} "type,spot,strike,rate,volatility,years\n${rows}\n")
  expect(${status} "${pattern}" ${file} --all)
endfunction()

execute_process(COMMAND ${PROGRAM} ${SHIPPED} ERROR_VARIABLE error OUTPUT_QUIET)
if(error MATCHES "lacks AVX-512")
  message(STATUS "This processor lacks AVX-512: nothing more to test")
  return()
endif()

expect(0 "4000 options.*3995 more.*largest difference of prices: [0-9.]+e-1[0-9]" ${SHIPPED})
# A textbook's pair (Hull, Options, Futures, and Other Derivatives): 4.76 and 0.81.
expect_of_rows(0 "4\\.7594.*0\\.8086" "call,42,40,0.1,0.2,0.5" "put,42,40,0.1,0.2,0.5")
expect_of_rows(1 "options_test.csv:3: spot is not a number: 'x42'"
               "call,42,40,0.1,0.2,0.5" "put,x42,40,0.1,0.2,0.5")
expect_of_rows(1 ":2: volatility is not positive: '-0.2'" "call,42,40,0.1,-0.2,0.5")
expect_of_rows(1 ":2: type is neither call nor put: 'swap'" "swap,42,40,0.1,0.2,0.5")
expect_of_rows(1 ":2: 6 fields expected" "call,42,40,0.1,0.2")
expect_of_rows(1 ":2: 6 fields expected" "call,42,40,0.1,0.2,0.5,7")
expect(1 "missing.csv: cannot be read" ${SCRATCH}/missing.csv)
expect(2 "usage")
