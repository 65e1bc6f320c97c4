# What the scripts that run in CMake's script mode (cmake -P) share: the
# check of their -D arguments and the way they run a step.

# Stops the script `script` unless every variable named after it was given
# a value (-D<name>=...).
function(msg_require_arguments script)
  foreach(required IN LISTS ARGN)
    if(NOT DEFINED ${required} OR "${${required}}" STREQUAL "")
      message(FATAL_ERROR "${script}: -D${required}=... is required")
    endif()
  endforeach()
endfunction()

# The generator for the builds a script starts: -DGENERATOR, else Ninja.
macro(msg_default_generator)
  if(NOT DEFINED GENERATOR OR GENERATOR STREQUAL "")
    set(GENERATOR "Ninja")
  endif()
endmacro()

# Runs a command and stops the script with its output if it fails. Leaves
# the command's standard output, without trailing white space, in
# `run_stdout` and its standard error in `run_stderr`.
function(run_step description)
  execute_process(COMMAND ${ARGN}
    RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE errors
    OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${description} failed (${result}):\n${ARGN}\n${output}\n${errors}")
  endif()
  set(run_stdout "${output}" PARENT_SCOPE)
  set(run_stderr "${errors}" PARENT_SCOPE)
endfunction()
