# Runs one script through "ardelvantine-cli run" in a scratch folder that holds a copy of the
# demo recording, then compares standard output with NAME.out, standard error and the exit
# code with NAME.err (a script that must fail) and every file under NAME.files/ with the file
# of the same name that the script wrote.
#   cmake -DCLI=... -DSCRIPT_DIR=... -DNAME=... -DDEMO=... -DWORK=... -P run_script_test.cmake
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})
file(COPY ${DEMO} DESTINATION ${WORK})
file(COPY ${SCRIPT_DIR}/${NAME}.script DESTINATION ${WORK})

execute_process(COMMAND ${CLI} run --program-dir . ${NAME}.script
                WORKING_DIRECTORY ${WORK}
                OUTPUT_FILE ${WORK}/stdout.txt ERROR_FILE ${WORK}/stderr.txt
                RESULT_VARIABLE code)

set(failed FALSE)
function(compare expected actual)
  execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${expected} ${actual}
                  RESULT_VARIABLE differs)
  if(differs)
    file(READ ${actual} text)
    message(SEND_ERROR "${actual} differs from ${expected}; it reads:\n${text}")
    set(failed TRUE PARENT_SCOPE)
  endif()
endfunction()

compare(${SCRIPT_DIR}/${NAME}.out ${WORK}/stdout.txt)
if(EXISTS ${SCRIPT_DIR}/${NAME}.err)
  compare(${SCRIPT_DIR}/${NAME}.err ${WORK}/stderr.txt)
  if(NOT code EQUAL 2)
    message(SEND_ERROR "exit code ${code}, expected 2")
  endif()
else()
  file(READ ${WORK}/stderr.txt errors)
  if(NOT code EQUAL 0 OR NOT errors STREQUAL "")
    message(SEND_ERROR "exit code ${code}, standard error:\n${errors}")
  endif()
endif()

file(GLOB_RECURSE expected_files RELATIVE ${SCRIPT_DIR}/${NAME}.files ${SCRIPT_DIR}/${NAME}.files/*)
foreach(f IN LISTS expected_files)
  compare(${SCRIPT_DIR}/${NAME}.files/${f} ${WORK}/${f})
endforeach()
