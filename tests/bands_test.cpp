// The thread layer under the banded converters, and the banded converters
// under load: many callers at once, every result intact, nothing left running.
#include <dirent.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "cycbcr.h"
#include "platform/threads.h"
#include "support/frames.h"

namespace {

using namespace std::chrono_literals;
using cycbcr::qbOSCloseEvent;
using cycbcr::qbOSCloseThread;
using cycbcr::qbOSCreateEvent;
using cycbcr::qbOSCreateThread;
using cycbcr::qbOSSetEvent;
using cycbcr::qbOSWaitForEvent;

// Threads of this process now, from the kernel's list.
int process_threads() {
    DIR* dir = opendir("/proc/self/task");
    if (dir == nullptr) return -1;
    int n = 0;
    while (const dirent* e = readdir(dir)) n += e->d_name[0] != '.';
    closedir(dir);
    return n;
}

// A detached thread may still be leaving the kernel's list just after its
// body returned; give it a moment.
int settled_threads(int expected) {
    int n = process_threads();
    for (int i = 0; i < 200 && n != expected; ++i) {
        std::this_thread::sleep_for(5ms);
        n = process_threads();
    }
    return n;
}

TEST(ThreadLayer, EventStaysSetAndWaitsTimeOutInMilliseconds) {
    void* e = qbOSCreateEvent(nullptr, 0, 0, "test");
    ASSERT_NE(e, nullptr);
    const auto t0 = std::chrono::steady_clock::now();
    EXPECT_EQ(qbOSWaitForEvent(e, 30), 1u);
    const auto waited = std::chrono::steady_clock::now() - t0;
    EXPECT_GE(waited, 30ms);
    EXPECT_LT(waited, 2s);
    qbOSSetEvent(e);
    // Set once, set for every later wait: nothing resets it.
    for (int i = 0; i < 3; ++i) EXPECT_EQ(qbOSWaitForEvent(e, 1000000), 0u);
    qbOSCloseEvent(e);
    qbOSSetEvent(nullptr);  // a worker run with no event to report to
}

TEST(ThreadLayer, SetWakesAWaiterOnAnotherThread) {
    void* e = qbOSCreateEvent(nullptr, 0, 0, "test");
    std::thread setter([e] {
        std::this_thread::sleep_for(20ms);
        qbOSSetEvent(e);
    });
    EXPECT_EQ(qbOSWaitForEvent(e, 60000), 0u);
    setter.join();
    qbOSCloseEvent(e);
}

struct Named {
    char name[32] = {};
    std::atomic<bool> ran{false};
};

unsigned int record_name(void* arg) {
    auto* n = static_cast<Named*>(arg);
    pthread_getname_np(pthread_self(), n->name, sizeof n->name);
    n->ran = true;
    return 7;
}

TEST(ThreadLayer, ThreadsAreNamedDetachedAndAwaited) {
    const int before = process_threads();
    Named named[3];
    uint32_t id = 0;
    for (Named& n : named) {
        void* t = qbOSCreateThread(nullptr, 0, record_name, &n, 0, &id, "ycbcr422p10");
        ASSERT_NE(t, nullptr);
        qbOSCloseThread(t, "d");
    }
    cycbcr::qbOSWaitForStartedThreads();
    for (const Named& n : named) {
        EXPECT_TRUE(n.ran);
        EXPECT_STREQ(n.name, "ycbcr422p10");
    }
    EXPECT_NE(id, 0u);
    EXPECT_EQ(settled_threads(before), before);
}

TEST(ThreadLayer, InterlockedCountsFromManyThreads) {
    volatile int32_t counter = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 10000; ++i) {
                cycbcr::qbOSInterlockedIncrement(&counter);
                if (i % 2 == 0) cycbcr::qbOSInterlockedDecrement(&counter);
            }
        });
    }
    for (std::thread& t : threads) t.join();
    EXPECT_EQ(cycbcr::qbOSInterlockedRead(&counter), 8 * 5000);
}

// The four banded entries on frames just wide enough to band, called from
// eight threads at once, 10,000 calls in all: each result the same as the
// single-threaded converter's, and no thread left behind.
using Planar = unsigned int (*)(uint8_t*, const uint8_t*, const uint8_t*, const uint8_t*,
                                unsigned int, unsigned int, unsigned int, unsigned int);
struct Banded {
    const char* name;
    Planar entry;
    Planar internal;
    unsigned int bytes_per_row;  // of the destination
    bool full_chroma;
};

TEST(BandedConverters, ManyCallersAtOnceGetIntactFramesAndLeaveNothingRunning) {
    const unsigned int w = 2112, h = 16;  // 8 bands of 2 rows
    const Banded banded[] = {
        {"yuv422p10_to_012v", cycbcr_yuv422p10_to_012v, cycbcr_yuv422p10_to_012v_internal,
         v210_row_bytes(w), false},
        {"yuv422p12_to_012v", cycbcr_yuv422p12_to_012v, cycbcr_yuv422p12_to_012v_internal,
         v210_row_bytes(w), false},
        {"yuv444p12_to_012v", cycbcr_yuv444p12_to_012v, cycbcr_yuv444p12_to_012v_internal,
         v210_row_bytes(w), true},
        {"yuv422p10_to_uyvy", cycbcr_yuv422p10_to_uyvy, cycbcr_yuv422p10_to_uyvy_internal, 2 * w,
         false},
    };
    cycbcr_set_cpu(0);  // the banded path for all four
    const unsigned int srcPitch = 2 * w + 64;
    const size_t plane = size_t{srcPitch} * (h + 1);
    const std::vector<uint8_t> y = cycbcr_test::random_bytes(plane, 1);
    const std::vector<uint8_t> cb = cycbcr_test::random_bytes(plane, 2);
    const std::vector<uint8_t> cr = cycbcr_test::random_bytes(plane, 3);
    const int before = process_threads();

    for (const Banded& b : banded) {
        SCOPED_TRACE(b.name);
        const unsigned int pitch = b.bytes_per_row + 64;
        const size_t bytes = size_t{pitch} * (h + 1);
        std::vector<uint8_t> expected(bytes, 0x5A);
        b.internal(expected.data(), y.data(), cb.data(), cr.data(), w, h, pitch, srcPitch);
        std::atomic<int> calls{0}, wrong{0}, wrong_count{0};
        std::vector<std::thread> callers;
        for (int t = 0; t < 8; ++t) {
            callers.emplace_back([&] {
                std::vector<uint8_t> out(bytes);
                while (calls.fetch_add(1) < 2500) {
                    std::memset(out.data(), 0x5A, out.size());
                    const unsigned int n =
                        b.entry(out.data(), y.data(), cb.data(), cr.data(), w, h, pitch, srcPitch);
                    wrong_count += n != h * pitch;
                    wrong += out != expected;
                }
            });
        }
        for (std::thread& t : callers) t.join();
        EXPECT_EQ(wrong, 0);
        EXPECT_EQ(wrong_count, 0);
    }
    EXPECT_EQ(settled_threads(before), before);
}

}  // namespace
