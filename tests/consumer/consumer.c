/* A program that uses the installed library as any C caller would: the public
 * header, the exported converters, the processor level and its global. */
#include <cycbcr.h>

#include <stdio.h>
#include <string.h>

static int failures = 0;

static void check(int ok, const char* what) {
    if (!ok) {
        fprintf(stderr, "consumer: FAILED: %s\n", what);
        ++failures;
    }
}

int main(void) {
    enum { kWidth = 6, kHeight = 3, kPitch = 16 };
    uint8_t src[kPitch * kHeight];
    uint8_t dst[kPitch * kHeight];
    uint8_t expected[kPitch * kHeight];
    unsigned int i;
    unsigned int count;
    unsigned int best;
    unsigned int chosen;

    for (i = 0; i < sizeof src; ++i) src[i] = (uint8_t)(i * 7 + 3);
    /* Equal pitches: the whole frame, row padding included, has its 16-bit
     * words byte-swapped. */
    for (i = 0; i < sizeof src; i += 2) {
        expected[i] = src[i + 1];
        expected[i + 1] = src[i];
    }
    memset(dst, 0xEE, sizeof dst);
    count = cycbcr_yuy2_to_uyvy(dst, src, kWidth, kHeight, kPitch, kPitch);
    check(count == kHeight * kPitch, "yuy2_to_uyvy returns height * dstPitch");
    check(memcmp(dst, expected, sizeof dst) == 0, "yuy2_to_uyvy swaps the bytes of each word");

    check(CYCBCR_FOURCC('Y', 'U', 'Y', '2') == CYCBCR_FOURCC_YUY2, "FourCC macro");

    /* The version: the header's three numbers, its string and number, and the
     * loaded library's answers all say the same. The script running this
     * program compares the line printed with the package's other versions. */
    {
        char text[40];
        snprintf(text, sizeof text, "%d.%d.%d", CYCBCR_VERSION_MAJOR, CYCBCR_VERSION_MINOR,
                 CYCBCR_VERSION_PATCH);
        check(strcmp(CYCBCR_VERSION_STRING, text) == 0,
              "CYCBCR_VERSION_STRING is major.minor.patch");
        check(strcmp(cycbcr_version(), text) == 0, "cycbcr_version() is the header's version");
        check(CYCBCR_VERSION == CYCBCR_VERSION_MAJOR * 65536u + CYCBCR_VERSION_MINOR * 256u +
                                    CYCBCR_VERSION_PATCH,
              "CYCBCR_VERSION packs major, minor, patch");
        check(cycbcr_version_number() == CYCBCR_VERSION,
              "cycbcr_version_number() is the header's version");
        check(CYCBCR_MAKE_VERSION(1, 2, 3) > CYCBCR_MAKE_VERSION(1, 1, 255) &&
                  CYCBCR_MAKE_VERSION(2, 0, 0) > CYCBCR_MAKE_VERSION(1, 255, 255) &&
                  CYCBCR_MAKE_VERSION(1, 0, 1) > CYCBCR_MAKE_VERSION(1, 0, 0),
              "version numbers order as versions do");
        printf("consumer: version %s\n", cycbcr_version());
    }

    /* The same pair through the lookup, sized by the query: whole frames. */
    {
        uint64_t dstBytes = 0, srcBytes = 0;
        cycbcr_converter fn = cycbcr_pair_converter(CYCBCR_FOURCC_UYVY, CYCBCR_FOURCC_YUY2);
        check(fn == cycbcr_yuy2_to_uyvy, "pair lookup gives the pair's converter");
        check(cycbcr_buffer_sizes(CYCBCR_FOURCC_UYVY, CYCBCR_FOURCC_YUY2, kWidth, kHeight, kPitch,
                                  kPitch, &dstBytes, &srcBytes) == 1 &&
                  dstBytes == sizeof dst && srcBytes == sizeof src,
              "buffer sizes of a whole frame");
        check(cycbcr_fix_pitch(CYCBCR_FOURCC_YUY2, kWidth, 0) == 2 * kWidth, "pitch rule");
    }

    best = cycbcr_get_cpu(0);
    chosen = cycbcr_get_cpu(1);
    check(best <= 6, "best level in range");
    check(chosen <= 6, "chosen level in range");
    check(gdwProcType == chosen, "gdwProcType holds the chosen level");
    check(cycbcr_set_cpu(0) == 0 && gdwProcType == 0, "level 0 can be forced");

    if (failures == 0) printf("consumer: ok (best level %u, chosen %u)\n", best, chosen);
    return failures == 0 ? 0 : 1;
}
