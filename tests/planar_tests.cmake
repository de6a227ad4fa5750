# Packed <-> planar and planar <-> planar 8-bit conversions, and the
# imaging-library equivalents their paths call.
foreach(family packed_planar planar_copy imaging)
    cycbcr_test(${family})
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
