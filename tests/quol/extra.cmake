# The quol command of the tendrane program, run as a user would.
if(TARGET tendrane)
  add_test(NAME quol_command_prints_pi COMMAND tendrane quol -e PI)
  set_tests_properties(quol_command_prints_pi PROPERTIES
    PASS_REGULAR_EXPRESSION "^3\\.1415926535898\n$" LABELS quol)

  # A failing script prints its report and exits with status 1.
  add_test(NAME quol_command_reports_failures
    COMMAND sh -c "\"$0\" quol -e '{ y = 1 + undefinedThing }' 2>&1; test $? -eq 1" $<TARGET_FILE:tendrane>)
  set_tests_properties(quol_command_reports_failures PROPERTIES
    PASS_REGULAR_EXPRESSION "^Quol error: Undefined: 'undefinedThing'\n\\.\\.\\.= 1 \\+ undefinedThing <!>  }\n$"
    LABELS quol)
  # PASS_REGULAR_EXPRESSION ignores the exit status; check it on its own.
  add_test(NAME quol_command_fails_with_status_1
    COMMAND sh -c "\"$0\" quol -e '1 +' >/dev/null 2>&1; test $? -eq 1" $<TARGET_FILE:tendrane>)
  set_tests_properties(quol_command_fails_with_status_1 PROPERTIES LABELS quol)

  # A script file, and script text on standard input.
  add_test(NAME quol_command_runs_a_file
    COMMAND tendrane quol ${CMAKE_CURRENT_SOURCE_DIR}/quol/scripts/for_loops.quol)
  set_tests_properties(quol_command_runs_a_file PROPERTIES LABELS quol)
  add_test(NAME quol_command_reads_standard_input
    COMMAND sh -c "echo '{ compose(@a, 3, 1, 2); quicksort(@a, 0, 2, > $0 - $1); a[0] # a[1] # a[2] }' | \"$0\" quol"
            $<TARGET_FILE:tendrane>)
  set_tests_properties(quol_command_reads_standard_input PROPERTIES
    PASS_REGULAR_EXPRESSION "^123\n$" LABELS quol)

  # input reads one line at a time, without its line end, and void at the end.
  add_test(NAME quol_input_reads_lines
    COMMAND sh -c "printf 'line one\\r\\nline two' | \"$0\" quol -e \"input() # '|' # input() # '|' # classify(input())\""
            $<TARGET_FILE:tendrane>)
  set_tests_properties(quol_input_reads_lines PROPERTIES
    PASS_REGULAR_EXPRESSION "^line one\\|line two\\|void\n$" LABELS quol)
  # print writes the text as it stands, without a line end.
  add_test(NAME quol_print_writes_text COMMAND tendrane quol -e "{ print('a'); print(1.50); void }")
  set_tests_properties(quol_print_writes_text PROPERTIES PASS_REGULAR_EXPRESSION "^a1\\.5\n?$" LABELS quol)
endif()
