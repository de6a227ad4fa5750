// Wide frames in eight row bands, each on a short-lived thread of its own. Four
// high-bit-depth converters use it; each is three functions: the exported
// entry, which picks a path and, for a wide frame, starts and awaits the bands;
// `_internal`, which converts a run of rows on the calling thread; and
// `_worker`, a band's thread body.
#pragma once

#include <unistd.h>

#include <cstdint>

#include "cycbcr.h"
#include "frame/inline.h"
#include "platform/threads.h"

namespace cycbcr {

// The single-threaded converter of a run of rows (the entry's arguments, height
// being the rows to convert).
using BandInternal = unsigned int (*)(uint8_t* dst, const uint8_t* srcY, const uint8_t* srcCb,
                                      const uint8_t* srcCr, unsigned int width, unsigned int height,
                                      unsigned int dstPitch, unsigned int srcPitch);

enum class BandRows : uint8_t {
    // Bands 0 to 6 get height / 8 rows and band 7 the rest.
    SevenPlusRest,
    // Every band gets height / 8 rows: the last height % 8 rows of the frame are
    // left as they were. Kept: existing callers of the 12-bit 4:2:2 converter
    // get exactly this.
    EightEqual,
};

struct BandUser {
    BandRows rows;
    // Chroma planes step a whole Y pitch per row (4:4:4), else half of it.
    bool fullChroma;
    const char* event;   // the event's name
    const char* thread;  // the workers' name
    unsigned int (*worker)(void*);
    // For converters whose rows may reach past their pitch: the bytes a row's
    // conversion writes into the start of the row below at this width and
    // destination pitch (0: none, or rows that overlap anyway; at most 16),
    // and the converter of a run of rows.
    uint32_t (*reach_below)(uint32_t width, uint32_t dstPitch) = nullptr;
    BandInternal internal = nullptr;
};

// Sequentially, a row's writes into the row below are overwritten by that
// row's own conversion. In bands the row below a band's last row is the next
// band's first, which may already be converted: each band's first row is
// converted again once all bands are done, keeping what it writes into the row
// below it, so that the frame is the single-threaded one whatever the timing.
inline void convert_band_starts_again(BandInternal internal, const band_job (&jobs)[8],
                                      uint32_t below) {
    if (below > 16) return;
    for (uint32_t k = 1; k < 8; ++k) {
        const band_job& job = jobs[k];
        if (job.rows == 0 || jobs[k - 1].rows == 0) continue;
        // The row below is the band's own next one (already right), the next
        // band's first (converted again next), or past the rows converted
        // (this row's words, written again alike).
        uint8_t kept[16];
        uint8_t* next = job.dst + job.dstPitch;
        for (uint32_t i = 0; i < below; ++i) kept[i] = next[i];
        internal(job.dst, job.srcY, job.srcCb, job.srcCr, job.width, 1, job.dstPitch, job.srcPitch);
        for (uint32_t i = 0; i < below; ++i) next[i] = kept[i];
    }
}

// A worker's body: converts its band, then drops its reference and reports the
// last one through the event.
CYCBCR_INLINE unsigned int run_band(BandInternal internal, void* arg) {
    const band_job& job = *static_cast<const band_job*>(arg);
    const unsigned int n = internal(job.dst, job.srcY, job.srcCb, job.srcCr, job.width, job.rows,
                                    job.dstPitch, job.srcPitch);
    volatile int32_t* pending = job.pending;
    void* done = job.done;
    qbOSInterlockedDecrement(pending);
    // A separate read: two bands ending together may both see 0, or neither;
    // the entry's polling, not this event, is what it waits for in the end.
    if (qbOSInterlockedRead(pending) == 0) qbOSSetEvent(done);
    return n;
}

// The banded path of an entry: eight workers over the frame, awaited; returns
// height * dstPitch as passed.
CYCBCR_INLINE unsigned int run_bands(const BandUser& user, uint8_t* dst, const uint8_t* srcY,
                                     const uint8_t* srcCb, const uint8_t* srcCr, unsigned int width,
                                     unsigned int height, unsigned int dstPitch,
                                     unsigned int srcPitch) {
    band_job jobs[8];
    volatile int32_t pending = 0;
    uint32_t threadId = 0;
    void* done = qbOSCreateEvent(nullptr, 0, 0, user.event);
    pending = 1;  // the entry's own reference
    const uint32_t b = height >> 3;
    for (uint32_t k = 0; k < 8; ++k) {
        // Offsets in 32-bit arithmetic, as the callers' pitches are.
        const uint32_t yOffset = k * b * srcPitch;
        const uint32_t cOffset = user.fullChroma ? yOffset : yOffset >> 1;
        band_job& job = jobs[k];
        job.dst = dst + static_cast<uint32_t>(k * b * dstPitch);
        job.srcY = const_cast<uint8_t*>(srcY) + yOffset;
        job.srcCb = const_cast<uint8_t*>(srcCb) + cOffset;
        job.srcCr = const_cast<uint8_t*>(srcCr) + cOffset;
        job.width = width;
        job.rows = user.rows == BandRows::SevenPlusRest && k == 7 ? height - 7 * b : b;
        job.dstPitch = dstPitch;
        job.srcPitch = srcPitch;
        job.pending = &pending;
        job.done = done;
        qbOSInterlockedIncrement(&pending);
        qbOSCloseThread(qbOSCreateThread(nullptr, 0, user.worker, &job, 0, &threadId, user.thread),
                        "d");
    }
    if (qbOSInterlockedDecrement(&pending) != 0) qbOSWaitForEvent(done, 30);
    while (qbOSInterlockedRead(&pending) > 0) usleep(1000);
    // The workers' last reads of `pending` and `done` are behind their
    // decrements: let them finish before the frame that holds both goes away.
    qbOSWaitForStartedThreads();
    qbOSCloseEvent(done);
    if (user.reach_below != nullptr)
        if (const uint32_t below = user.reach_below(width, dstPitch); below != 0)
            convert_band_starts_again(user.internal, jobs, below);
    return height * dstPitch;
}

}  // namespace cycbcr
