# `maxhost info` on a shot a script builds: the text listing names the reference and its records, and --json
# writes valid JSON whose values can be read back (names with quotes and line breaks escaped).
#   cmake -DMAXHOST=... -DHOST_PLUGIN_DIR=... -DWORK_DIR=... -DSCRIPT=make_shot.ms -P run_info.cmake
file(REMOVE_RECURSE ${WORK_DIR}/temp)
file(MAKE_DIRECTORY ${WORK_DIR}/temp)
set(env ${CMAKE_COMMAND} -E env LANG=C LC_ALL=C MAXHOST_TEMP=${WORK_DIR}/temp)
set(host ${MAXHOST} --plugins ${HOST_PLUGIN_DIR} --ini ${WORK_DIR}/info.ini)

execute_process(COMMAND ${env} ${host} run ${SCRIPT} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "making the shot failed (${rc}):\n${out}\n${err}")
endif()
set(shot ${WORK_DIR}/temp/info_shot.max)

execute_process(COMMAND ${env} ${host} info ${shot} RESULT_VARIABLE rc OUTPUT_VARIABLE text ERROR_VARIABLE err)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "maxhost info failed (${rc}):\n${text}\n${err}")
endif()
foreach(expected "kind: Vandrels reference" "file: ${WORK_DIR}/temp/info_set.max" "- name: Chair"
                 "- Override Wire Color" "- name: Lamp\n        overrides:\n          - Override Hidden"
                 "- name: \"Odd \\\"quoted\\\"\\nname\"")
  string(FIND "${text}" "${expected}" at)
  if(at EQUAL -1)
    message(FATAL_ERROR "maxhost info does not show '${expected}':\n${text}")
  endif()
endforeach()

execute_process(COMMAND ${env} ${host} info --json ${shot} RESULT_VARIABLE rc OUTPUT_VARIABLE json ERROR_VARIABLE err)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "maxhost info --json failed (${rc}):\n${json}\n${err}")
endif()
string(JSON kind ERROR_VARIABLE problem GET "${json}" items 0 kind)
if(problem)
  message(FATAL_ERROR "maxhost info --json wrote no valid listing (${problem}):\n${json}")
endif()
string(JSON file GET "${json}" items 0 file)
string(JSON records LENGTH "${json}" items 0 nodeRecords)
set(found_odd FALSE)
math(EXPR last "${records} - 1")
foreach(i RANGE ${last})
  string(JSON name GET "${json}" items 0 nodeRecords ${i} name)
  if(name STREQUAL "Odd \"quoted\"\nname")
    set(found_odd TRUE)
    string(JSON odd_override GET "${json}" items 0 nodeRecords ${i} overrides 0)
  endif()
  if(name STREQUAL "Chair")
    string(JSON chair_override GET "${json}" items 0 nodeRecords ${i} overrides 0)
  endif()
endforeach()
if(NOT kind STREQUAL "Vandrels reference" OR NOT file STREQUAL "${WORK_DIR}/temp/info_set.max"
   OR NOT found_odd OR NOT odd_override STREQUAL "Override Wire Color"
   OR NOT chair_override STREQUAL "Override Wire Color")
  message(FATAL_ERROR "maxhost info --json lists the wrong things:\n${json}")
endif()

# A file that is no scene gives the host's reason and a failure.
execute_process(COMMAND ${env} ${host} info ${WORK_DIR}/temp RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(rc EQUAL 0 OR NOT err MATCHES "Is a directory")
  message(FATAL_ERROR "maxhost info of a folder: ${rc}\n${out}\n${err}")
endif()
