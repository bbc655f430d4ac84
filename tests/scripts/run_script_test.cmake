# Runs one script through "ardelvantine-cli run" in a scratch folder that holds a copy of the
# demo recording (in its subfolder SUBDIR when given, beside the script), then compares
# standard output with NAME.out, standard error and the exit code with NAME.err (a script that
# must fail) and every file under NAME.files/ with the file of the same name that the script
# wrote. The expected files lie in SCRIPT_DIR/NAME.* unless EXPECTED names another prefix.
# RUN_ARGS puts the script in another program's words (the desktop's "--program-dir;.;--run").
#   cmake -DCLI=... -DSCRIPT=... -DNAME=... -DDEMO=... -DWORK=... [-DSUBDIR=...]
#         [-DEXPECTED=...] [-DRUN_ARGS=...] [-DDATA_DIR=...] [-DGENERATED_DIR=...]
#         [-DTEMPLATE=...]
#         -P run_script_test.cmake
if(NOT EXPECTED)
  get_filename_component(SCRIPT_DIR ${SCRIPT} DIRECTORY)
  set(EXPECTED ${SCRIPT_DIR}/${NAME})
endif()
if(SUBDIR)
  set(RUN_DIR ${WORK}/${SUBDIR})
  set(PREFIX ${SUBDIR}/)
else()
  set(RUN_DIR ${WORK})
  set(PREFIX "")
endif()
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${RUN_DIR})
file(COPY ${DEMO} DESTINATION ${RUN_DIR})
file(COPY ${SCRIPT} DESTINATION ${RUN_DIR})
# NAME.data lists recordings that the script opens, one a line: from the test data folder, or
# else from the folder of recordings that the test run generates.
if(EXISTS ${EXPECTED}.data)
  file(STRINGS ${EXPECTED}.data data_files)
  foreach(f IN LISTS data_files)
    if(EXISTS ${DATA_DIR}/${f})
      file(COPY ${DATA_DIR}/${f} DESTINATION ${RUN_DIR})
    else()
      file(COPY ${GENERATED_DIR}/${f} DESTINATION ${RUN_DIR})
    endif()
  endforeach()
endif()
# The template of new ABF files lies beside the program, here the scratch folder.
if(TEMPLATE)
  file(COPY ${TEMPLATE} DESTINATION ${WORK})
endif()
get_filename_component(script_name ${SCRIPT} NAME)

if(NOT RUN_ARGS)
  set(RUN_ARGS run --program-dir .)
endif()
execute_process(COMMAND ${CLI} ${RUN_ARGS} ${PREFIX}${script_name}
                WORKING_DIRECTORY ${WORK}
                OUTPUT_FILE ${WORK}/stdout.txt ERROR_FILE ${WORK}/stderr.txt
                RESULT_VARIABLE code)

set(failed FALSE)
# The scratch folder's path varies from build to build; a file that names it (the array text
# names the open recording by its full path) is compared with the path written as <WORK>. The
# comparison runs on the bytes in hex, since a text read drops carriage returns.
function(compare expected actual)
  file(READ ${actual} content HEX)
  string(HEX "${WORK}" work_hex)
  string(FIND "${content}" "${work_hex}" at)
  if(NOT at EQUAL -1)
    string(HEX "<WORK>" placeholder)
    string(REPLACE "${work_hex}" "${placeholder}" content "${content}")
    file(READ ${expected} wanted HEX)
    if(NOT content STREQUAL wanted)
      message(SEND_ERROR "${actual} differs from ${expected} (with its folder as <WORK>)")
      set(failed TRUE PARENT_SCOPE)
    endif()
    return()
  endif()
  execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${expected} ${actual}
                  RESULT_VARIABLE differs)
  if(differs)
    file(READ ${actual} text)
    message(SEND_ERROR "${actual} differs from ${expected}; it reads:\n${text}")
    set(failed TRUE PARENT_SCOPE)
  endif()
endfunction()

compare(${EXPECTED}.out ${WORK}/stdout.txt)
if(EXISTS ${EXPECTED}.err)
  compare(${EXPECTED}.err ${WORK}/stderr.txt)
  if(NOT code EQUAL 2)
    message(SEND_ERROR "exit code ${code}, expected 2")
  endif()
else()
  file(READ ${WORK}/stderr.txt errors)
  if(NOT code EQUAL 0 OR NOT errors STREQUAL "")
    message(SEND_ERROR "exit code ${code}, standard error:\n${errors}")
  endif()
endif()

file(GLOB_RECURSE expected_files RELATIVE ${EXPECTED}.files ${EXPECTED}.files/*)
foreach(f IN LISTS expected_files)
  compare(${EXPECTED}.files/${f} ${WORK}/${f})
endforeach()
