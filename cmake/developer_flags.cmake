# Warnings and sanitizers for the project's own code. Never installed, never exported.
add_library(kalv_developer_flags INTERFACE)
if(KALV_DEVELOPER OR KALV_BENCH)
  target_compile_options(kalv_developer_flags INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
endif()
if(KALV_SANITIZE)
  target_compile_options(kalv_developer_flags INTERFACE
    -fsanitize=${KALV_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(kalv_developer_flags INTERFACE -fsanitize=${KALV_SANITIZE})
endif()
