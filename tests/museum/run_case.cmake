# Runs one museum case and compares what it printed with its stored baseline (cmake -P, started by CTest).
#   -DMAXHOST=<maxhost executable> -DHOST_PLUGIN_DIR=<folder> -DTEST_PLUGIN_DIR=<folder> -DCASE_DIR=<tests/museum/Case>
#   -DWORK_DIR=<the case's folder in the build tree> -DSOURCE_DIR=<repository> -DBINARY_DIR=<build tree>
#   -DDIFF=<diff executable, may be empty>
# The case runs with a settings file, a temporary folder and a project folder of its own, made fresh in
# WORK_DIR, under the plain C locale. Its listener output and errors are normalised (folders of this run
# become <temp>, <project>, <case>, <work>, <build>, <source>; "took 12 ms" becomes "took <n> ms", "Merge
# Time: 0.0305" becomes "Merge Time: <n>") and must
# equal baseline.txt. With the environment variable MUSEUM_UPDATE=1 the output of a passing run is written
# to baseline.txt instead.
cmake_minimum_required(VERSION 3.20)

foreach(var MAXHOST HOST_PLUGIN_DIR TEST_PLUGIN_DIR CASE_DIR WORK_DIR SOURCE_DIR BINARY_DIR)
  if(NOT DEFINED ${var})
    message(FATAL_ERROR "run_case.cmake: ${var} is not set")
  endif()
endforeach()

get_filename_component(case_name "${CASE_DIR}" NAME)
set(script "${CASE_DIR}/case.ms")
set(baseline "${CASE_DIR}/baseline.txt")
set(temp_dir "${WORK_DIR}/temp")
set(project_dir "${WORK_DIR}/project")
set(output_file "${WORK_DIR}/output.txt")
set(actual_file "${WORK_DIR}/actual.txt")

file(REMOVE_RECURSE "${temp_dir}" "${project_dir}" "${WORK_DIR}/settings.ini" "${output_file}" "${actual_file}")
file(MAKE_DIRECTORY "${temp_dir}" "${project_dir}")

# Standard output and standard error go to the same file, so an error shows where it happened.
execute_process(
  COMMAND "${CMAKE_COMMAND}" -E env LANG=C LC_ALL=C "MAXHOST_TEMP=${temp_dir}" "MAXHOST_PROJECT=${project_dir}"
          "${MAXHOST}" --plugins "${HOST_PLUGIN_DIR}" --plugins "${TEST_PLUGIN_DIR}" --ini "${WORK_DIR}/settings.ini" run "${script}"
  WORKING_DIRECTORY "${WORK_DIR}"
  OUTPUT_FILE "${output_file}"
  ERROR_FILE "${output_file}"
  RESULT_VARIABLE result)
file(READ "${output_file}" output)

# Folders of this run by their placeholders, the longest (innermost) first; each also as the file system
# spells it when it differs (a build tree reached through a link).
set(placeholders temp_dir "<temp>" project_dir "<project>" WORK_DIR "<work>" CASE_DIR "<case>"
                 BINARY_DIR "<build>" SOURCE_DIR "<source>")
set(pairs)
list(LENGTH placeholders count)
math(EXPR last "${count} - 1")
foreach(i RANGE 0 ${last} 2)
  math(EXPR j "${i} + 1")
  list(GET placeholders ${i} var)
  list(GET placeholders ${j} placeholder)
  set(path "${${var}}")
  string(REGEX REPLACE "/+$" "" path "${path}")
  file(REAL_PATH "${path}" real)
  foreach(form IN ITEMS "${path}" "${real}")
    string(LENGTH "${form}" length)
    list(APPEND pairs "${length}|${form}|${placeholder}")
  endforeach()
endforeach()
# Longest first: sort by length, written with leading zeros so that text order is number order.
set(keyed)
foreach(pair IN LISTS pairs)
  string(REGEX MATCH "^[0-9]+" length "${pair}")
  string(LENGTH "${length}" digits)
  math(EXPR pad "6 - ${digits}")
  string(REPEAT "0" ${pad} zeros)
  list(APPEND keyed "${zeros}${pair}")
endforeach()
list(SORT keyed ORDER DESCENDING)
foreach(pair IN LISTS keyed)
  string(REGEX REPLACE "^[0-9]+\\|" "" pair "${pair}")
  string(FIND "${pair}" "|" bar REVERSE)
  string(SUBSTRING "${pair}" 0 ${bar} form)
  math(EXPR after "${bar} + 1")
  string(SUBSTRING "${pair}" ${after} -1 placeholder)
  string(REPLACE "${form}" "${placeholder}" output "${output}")
endforeach()
# Timings vary from run to run: "... took 12 ms" and the plug-in's timing lines ("VD Merge Time: 0.030549").
string(REGEX REPLACE "took [0-9]+([.,][0-9]+)? ?(ms|s|seconds?|milliseconds?)" "took <n> ms" output "${output}")
string(REGEX REPLACE "( [Tt]ime): [0-9]+([.][0-9]+)?" "\\1: <n>" output "${output}")

file(WRITE "${actual_file}" "${output}")
# Prints a file as it is (message() would indent it).
function(show file)
  execute_process(COMMAND "${CMAKE_COMMAND}" -E cat "${file}")
endfunction()

if(NOT result EQUAL 0)
  show("${actual_file}")
  message(FATAL_ERROR "museum case ${case_name} failed (exit code ${result}); its output is above")
endif()
if(NOT output MATCHES "(^|\n)-- scene ")
  show("${actual_file}")
  message(FATAL_ERROR "museum case ${case_name} never showed the scene: a case calls SceneCompare.Show \"...\" "
                      "at least once. Its output is above")
endif()

if("$ENV{MUSEUM_UPDATE}" STREQUAL "1")
  set(old "")
  if(EXISTS "${baseline}")
    file(READ "${baseline}" old)
  endif()
  if(old STREQUAL output)
    message(STATUS "${case_name}: baseline unchanged")
  else()
    file(WRITE "${baseline}" "${output}")
    message(STATUS "${case_name}: baseline written")
  endif()
  return()
endif()

if(NOT EXISTS "${baseline}")
  show("${actual_file}")
  message(FATAL_ERROR "museum case ${case_name} has no baseline.txt; run scripts/update-museum-baselines.sh "
                      "${case_name} and review what it writes. Its output is above")
endif()
file(READ "${baseline}" expected)
if(NOT expected STREQUAL output)
  if(DIFF)
    execute_process(COMMAND "${DIFF}" -u --label "${case_name}/baseline.txt" --label "this run" "${baseline}"
                            "${actual_file}")
  else()
    message("No diff program was found; the baseline and this run's output follow.")
    show("${baseline}")
    message("----")
    show("${actual_file}")
  endif()
  message(FATAL_ERROR "museum case ${case_name} differs from its baseline (the diff is above; this run's "
                      "output is in ${actual_file})")
endif()
