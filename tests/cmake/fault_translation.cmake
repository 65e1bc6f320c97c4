# The fault translation test raises real faults (a null read, an integer
# division by zero) and catches them as C++ exceptions. An exception can leave
# a trapping instruction only in code compiled with -fnon-call-exceptions.
target_compile_options(fault_translation_test PRIVATE -fnon-call-exceptions)
