# Library sources, one family a file. Files ending in _avx2.cpp are compiled
# with -mavx2 and hold the only AVX2 code of the library; files ending in
# _ssse3.cpp are compiled with -mssse3.
set(CYCBCR_SOURCES
    platform/cpu_features.cpp
    platform/memory.cpp
    platform/memory_avx2.cpp
    platform/threads.cpp
    platform/imaging.cpp
    platform/imaging_colour.cpp
    platform/imaging_colour_avx2.cpp
    frame/formats.cpp
    frame/proc_level.cpp
    frame/dispatch.cpp
    frame/buffer_sizes.cpp
    frame/version.cpp

    ycbcr8/byte_order.cpp
    ycbcr8/byte_order_avx2.cpp
    ycbcr8/packed_rows.cpp
    ycbcr8/packed_rows_avx2.cpp
    ycbcr8/packed_planar.cpp
    ycbcr8/packed_planar_avx2.cpp
    ycbcr8/planar_copy.cpp
    ycbcr8/planar_copy_avx2.cpp
    ycbcr10/v210_engines.cpp
    ycbcr10/v210_uyvy.cpp
    ycbcr10/v210_uyvy_avx2.cpp
    ycbcr10/v210_entries.cpp
    ycbcr10/v210_unpack_avx2.cpp
    ycbcr10/v210_pack_avx2.cpp
    ycbcr10/v210_unpack_ssse3.cpp
    ycbcr10/uyvy_from_16bit_avx2.cpp
    ycbcr10/semi_planar.cpp
    ycbcr10/semi_planar_avx2.cpp
    ycbcr10/planar16_to_v210.cpp
    ycbcr10/planar16_to_v210_avx2.cpp
    ycbcr10/v210_to_planar16.cpp
    ycbcr10/v210_to_planar16_avx2.cpp
    ycbcr10/planar16_uyvy.cpp
    ycbcr10/planar16_uyvy_avx2.cpp

    torgb/colour_tables.cpp
    torgb/to_rgb.cpp
    torgb/to_rgb_avx2.cpp
    torgb/to_rgb_planar.cpp
    torgb/to_rgb_planar_avx2.cpp
    torgb/v210_to_rgb.cpp
    torgb/v210_to_rgb_avx2.cpp
    torgb/hbd_to_rgb.cpp
    torgb/hbd_to_rgb_avx2.cpp
    fromrgb/from_rgb.cpp
    fromrgb/from_rgb_avx2.cpp
    fromrgb/to_v210.cpp
    fromrgb/to_v210_avx2.cpp
    fromrgb/to_planar16.cpp
    fromrgb/to_planar16_avx2.cpp

    scale/scale.cpp
    scale/scale_avx2.cpp
)
