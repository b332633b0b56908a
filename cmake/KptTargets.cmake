# What every target of this project is compiled with. Only our own targets ask for it, so code that
# is merely included, and clients, are not held to these warnings. Warnings are errors where the
# presets say so: another compiler or build type may warn of what is none, and builds all the same.

set(KPT_WARNINGS
    -Wall
    -Wextra
    -Wpedantic
    -Wshadow
    -Wconversion
    -Wsign-conversion
    -Wold-style-cast
    -Wnon-virtual-dtor
    -Woverloaded-virtual
    -Wcast-align
    -Wcast-qual
    -Wformat=2
    -Wimplicit-fallthrough
    -Wundef
    -Wvla)
if(KPT_WARNINGS_AS_ERRORS)
  list(APPEND KPT_WARNINGS -Werror)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  list(APPEND KPT_WARNINGS -Wduplicated-cond -Wduplicated-branches -Wlogical-op)
endif()

set(KPT_SANITIZERS -fsanitize=address,undefined -fno-sanitize-recover=all)

function(kpt_target_defaults target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  target_compile_options(${target} PRIVATE ${KPT_WARNINGS})
  if(KPT_SANITIZE)
    target_compile_options(${target} PRIVATE ${KPT_SANITIZERS} -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE ${KPT_SANITIZERS})
  endif()
  if(KPT_BUILD_FUZZ)
    # Tells the fuzzer which paths an input took; the fuzzer itself is linked by its targets.
    target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
  endif()
  if(KPT_COVERAGE)
    target_compile_options(${target} PRIVATE --coverage -fprofile-update=single)
    target_link_options(${target} PRIVATE --coverage)
  endif()
endfunction()
