# Compiler flags of a fuzzing build (CYCBCR_BUILD_FUZZERS): every object gets
# libFuzzer's coverage feedback, AddressSanitizer and UndefinedBehaviorSanitizer,
# and any sanitizer report ends the run.
if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "CYCBCR_BUILD_FUZZERS needs clang (libFuzzer): configure with "
                        "-DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++")
endif()
if(CYCBCR_SANITIZE)
    message(FATAL_ERROR "CYCBCR_BUILD_FUZZERS already builds with the sanitizers; "
                        "leave CYCBCR_SANITIZE off")
endif()
# -O1 with line tables, as fuzzing builds usually are: quick to build, quick
# enough to run, and reports with file and line.
add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all
                    -fno-omit-frame-pointer -O1 -gline-tables-only)
add_link_options(-fsanitize=address,undefined)
