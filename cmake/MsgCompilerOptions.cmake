# Compiler settings shared by every target of the project.

option(MSG_WARNINGS_AS_ERRORS
  "Turn compiler warnings into errors (the project's own builds: make test, make demo, CI)" OFF)
option(MSG_SANITIZE_THREAD "Build everything with ThreadSanitizer" OFF)

if(MSG_SANITIZE AND MSG_SANITIZE_THREAD)
  message(FATAL_ERROR "MSG_SANITIZE and MSG_SANITIZE_THREAD cannot be combined; "
                      "configure a separate tree for each")
endif()
if(MSG_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined -fno-sanitize-recover=all)
endif()
if(MSG_SANITIZE_THREAD)
  add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
  add_link_options(-fsanitize=thread)
endif()

# The warnings the project's own code is held to. They become errors only
# with MSG_WARNINGS_AS_ERRORS, so that a release build or a newer compiler
# with new warnings never fails for someone who just builds the library.
function(msg_strict_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic)
  if(MSG_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
