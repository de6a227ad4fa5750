# Packed <-> planar and planar <-> planar 8-bit conversions, and the
# imaging-library equivalents their paths call.
foreach(family packed_planar planar_copy imaging)
    add_executable(${family}_test ${family}_test.cpp)
    target_link_libraries(${family}_test PRIVATE cycbcr_test_support GTest::gtest_main)
    target_compile_options(${family}_test PRIVATE ${CYCBCR_WARNINGS})
    # Tests that need AVX2 skip on other processors; report them as skipped.
    gtest_discover_tests(${family}_test DISCOVERY_MODE PRE_TEST
        PROPERTIES SKIP_REGULAR_EXPRESSION "\\[  SKIPPED \\]")
endforeach()

# libyuv, when installed, is an oracle wherever its rules and ours coincide.
find_path(CYCBCR_LIBYUV_INCLUDE_DIR libyuv.h)
find_library(CYCBCR_LIBYUV_LIBRARY yuv)
if(CYCBCR_LIBYUV_INCLUDE_DIR AND CYCBCR_LIBYUV_LIBRARY)
    target_include_directories(packed_planar_test SYSTEM PRIVATE ${CYCBCR_LIBYUV_INCLUDE_DIR})
    target_link_libraries(packed_planar_test PRIVATE ${CYCBCR_LIBYUV_LIBRARY})
    target_compile_definitions(packed_planar_test PRIVATE CYCBCR_HAVE_LIBYUV)
else()
    message(STATUS "libyuv not found: the packed/planar tests run without it")
endif()
