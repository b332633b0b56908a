# The compiler options of every target of this project. Only our own targets use them, so they do not
# apply to included code and to clients. Warnings are errors only in the presets: another compiler or
# build type may warn without a reason, and should still build.

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
  # At -O3, g++ 12 sees texts of std::string overlap that cannot (its bug 105651).
  string(TOUPPER "CMAKE_CXX_FLAGS_${CMAKE_BUILD_TYPE}" kpt_flags)
  if(CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13 AND "${${kpt_flags}}" MATCHES "-O3")
    list(APPEND KPT_WARNINGS -Wno-restrict)
  endif()
endif()

set(KPT_SANITIZERS -fsanitize=address,undefined -fno-sanitize-recover=all)

# What runs at users' reads files that strangers wrote. The checks of the C library need optimisation,
# and the sanitizers have checks of their own in their place.
set(KPT_HARDENING "")
if(CMAKE_BUILD_TYPE MATCHES "^(Release|RelWithDebInfo|MinSizeRel)$" AND NOT KPT_SANITIZE AND NOT KPT_SANITIZE_THREADS)
  set(KPT_HARDENING -fstack-protector-strong -fstack-clash-protection -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
endif()

function(kpt_target_defaults target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  target_compile_options(${target} PRIVATE ${KPT_WARNINGS} ${KPT_HARDENING})
  target_link_options(${target} PRIVATE LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
  if(KPT_SANITIZE)
    target_compile_options(${target} PRIVATE ${KPT_SANITIZERS} -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE ${KPT_SANITIZERS})
  endif()
  if(KPT_SANITIZE_THREADS)
    target_compile_options(${target} PRIVATE -fsanitize=thread -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=thread)
  endif()
  if(KPT_BUILD_FUZZ)
    # Tells the fuzzer which paths an input took. Its targets link the fuzzer itself.
    target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
  endif()
  if(KPT_COVERAGE)
    target_compile_options(${target} PRIVATE --coverage -fprofile-update=single)
    target_link_options(${target} PRIVATE --coverage)
  endif()
endfunction()
