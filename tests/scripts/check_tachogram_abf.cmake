# Reads the tachogram recording written by the heart rate script with "info" and "detect" and
# compares what they print with EXPECTED.info and EXPECTED.events. The header's date and time
# are those of the writing and are left out of the comparison.
#   cmake -DCLI=... -DFILE=... -DEXPECTED=... -DWORK=... -P check_tachogram_abf.cmake
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})
file(COPY ${FILE} DESTINATION ${WORK})
get_filename_component(name ${FILE} NAME)

execute_process(COMMAND ${CLI} info ${name} WORKING_DIRECTORY ${WORK}
                OUTPUT_VARIABLE info RESULT_VARIABLE code)
if(NOT code EQUAL 0)
  message(FATAL_ERROR "info ended with ${code}:\n${info}")
endif()
string(REGEX REPLACE "FileStartDate[^\n]*\n" "" info "${info}")
string(REGEX REPLACE "FileStartTime[^\n]*\n" "" info "${info}")
file(READ ${EXPECTED}.info wanted)
if(NOT info STREQUAL wanted)
  message(SEND_ERROR "info differs from ${EXPECTED}.info; it reads:\n${info}")
endif()

# Each sample is one beat in ms: beats longer than their neighbours by 150 ms and more.
execute_process(COMMAND ${CLI} detect --no-evt --grid - --param PeakDirection%=1
                        --param ThresholdAmplitude!=150 --param PeriodToSearchMax&=3000
                        --param PeriodStartBaseline&=2000 --param PeriodFindDecayTime&=3000
                        --param PeriodBaselineAverage&=1000 --param AreaThreshold!=0 ${name}
                WORKING_DIRECTORY ${WORK} OUTPUT_VARIABLE events ERROR_VARIABLE log
                RESULT_VARIABLE code)
if(NOT code EQUAL 0)
  message(FATAL_ERROR "detect ended with ${code}:\n${log}")
endif()
file(READ ${EXPECTED}.events wanted)
if(NOT events STREQUAL wanted)
  message(SEND_ERROR "detect differs from ${EXPECTED}.events; it printed:\n${events}")
endif()
