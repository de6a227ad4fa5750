# Every converter family called from eight threads at once, one family a
# process so that each family's first calls race to choose the processor level;
# and the converter that holds the level at 0 for the length of its call, on
# its own. Built with -DCYCBCR_TSAN=ON these are the ThreadSanitizer tests.
add_executable(concurrency_test ${CMAKE_CURRENT_LIST_DIR}/concurrency_test.cpp)
target_link_libraries(concurrency_test PRIVATE cycbcr_static)
target_compile_options(concurrency_test PRIVATE ${CYCBCR_WARNINGS})

set(concurrency_families
    byte_order packed_planar planar_planar v210_8bit v210_rgb ycbcr8_rgb rgb_ycbcr8
    hbd_planar semi_planar bands hbd_rgb rgb_planar16 scaling dispatcher)
# A report of either sanitizer fails the test whatever the exit status.
set(concurrency_fail "FAIL:;ThreadSanitizer;Sanitizer;runtime error")
foreach(family IN LISTS concurrency_families)
    add_test(NAME concurrency.${family} COMMAND concurrency_test ${family})
    set_tests_properties(concurrency.${family} PROPERTIES
        LABELS concurrency
        FAIL_REGULAR_EXPRESSION "${concurrency_fail}"
        ENVIRONMENT_MODIFICATION CYCBCR_CPU_FLAGS=unset:)
endforeach()
# The banded entries start their threads below level 5: that family runs on a
# processor case without AVX2 (SSE2, SSE4.1, SSE4.2: level 4).
set_tests_properties(concurrency.bands PROPERTIES
    ENVIRONMENT_MODIFICATION CYCBCR_CPU_FLAGS=set:0x6020)
add_test(NAME concurrency.level_hold COMMAND concurrency_test level_hold)
add_test(NAME concurrency.families
    COMMAND concurrency_test --families ${concurrency_families})
set_tests_properties(concurrency.level_hold concurrency.families PROPERTIES
    LABELS concurrency
    FAIL_REGULAR_EXPRESSION "${concurrency_fail}"
    ENVIRONMENT_MODIFICATION CYCBCR_CPU_FLAGS=unset:)
# The level and the band counter are touched only through atomic accesses.
add_test(NAME concurrency.shared_state
    COMMAND bash ${CMAKE_CURRENT_LIST_DIR}/check_shared_state.sh ${PROJECT_SOURCE_DIR})
set_tests_properties(concurrency.shared_state PROPERTIES
    LABELS concurrency
    FAIL_REGULAR_EXPRESSION "FAIL:")
