# Library sources, one family a file. Files ending in _avx2.cpp are compiled
# with -mavx2 and hold the only AVX2 code of the library; files ending in
# _ssse3.cpp are compiled with -mssse3.
set(CYCBCR_SOURCES
    platform/cpu_features.cpp
    platform/memory.cpp
    platform/packed_rows.cpp
    platform/imaging.cpp
    frame/formats.cpp
    frame/proc_level.cpp
    frame/dispatch.cpp
    ycbcr8/byte_order.cpp
    ycbcr8/byte_order_avx2.cpp
    ycbcr8/packed_planar.cpp
    ycbcr8/packed_planar_avx2.cpp
    ycbcr8/planar_copy.cpp
    ycbcr8/planar_copy_avx2.cpp
    ycbcr10/v210_pack.cpp
    ycbcr10/v210_pack_avx2.cpp
    ycbcr10/v210_convert.cpp
    ycbcr10/v210_convert_avx2.cpp
    ycbcr10/v210_unpack_ssse3.cpp
)
