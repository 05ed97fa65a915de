# Warnings, sanitizers and counters for the project's own code. Never installed, never exported.
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
if(KALV_COVERAGE) # of the libraries alone: what their tests run is not asked
  set(kalv_if_library $<STREQUAL:$<TARGET_PROPERTY:TYPE>,SHARED_LIBRARY>)
  # The counters stand in the file itself (%c in its name), so that a process that is killed has counted too. They are
  # atomic: many outcomes are told by differences, which one count that threads lose would turn round.
  target_compile_options(kalv_developer_flags INTERFACE
    "$<${kalv_if_library}:-fprofile-instr-generate;-fcoverage-mapping;-fprofile-update=atomic>"
    "$<${kalv_if_library}:SHELL:-mllvm -runtime-counter-relocation>")
  target_link_options(kalv_developer_flags INTERFACE $<${kalv_if_library}:-fprofile-instr-generate>)
endif()
