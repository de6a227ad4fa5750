// Threads, events and interlocked counters for the converters that split a
// frame into row bands. POSIX threads underneath; nothing here is exported.
#pragma once

#include <cstdint>

namespace cycbcr {

// A thread body: takes the argument given at creation; its result is not kept.
using ThreadBody = unsigned int (*)(void* arg);

// Starts `body(arg)` on a new thread named `name` (cut to the 15 characters a
// Linux thread name holds). `attributes`, `stackBytes` and `flags` are taken for
// the callers' sake and must be 0 (default attributes and stack, started at
// once). When `threadId` is given, a number identifying the thread within the
// process is stored there. Returns a handle for qbOSCloseThread, or null when
// no thread could be started.
void* qbOSCreateThread(void* attributes, uint32_t stackBytes, ThreadBody body, void* arg,
                       uint32_t flags, uint32_t* threadId, const char* name);
// Gives up the handle. A mode containing 'd' detaches the thread, which then
// runs to its end on its own; any other mode waits for it to end first.
void qbOSCloseThread(void* thread, const char* mode);

// Every thread that the calling thread started through qbOSCreateThread and
// that is still inside its body: waits until none is. The band converters end
// with it, so that no worker is still touching the caller's frame, counter or
// event after the converter has returned.
void qbOSWaitForStartedThreads();

// An event: once set it stays set (nothing resets it) and every wait on it
// returns at once. `attributes` and `flags` must be 0; `initiallySet` non-zero
// creates it set; `name` is kept for debugging only. Returns null when no event
// could be made.
void* qbOSCreateEvent(void* attributes, uint32_t flags, uint32_t initiallySet, const char* name);
void qbOSCloseEvent(void* event);
// Sets the event and wakes its waiters. A null event is ignored, so a band's
// worker may be run on its own with no event to report to.
void qbOSSetEvent(void* event);
// Waits until the event is set or `timeoutMs` milliseconds have passed. Returns
// 0 when the event was set, 1 on time-out.
uint32_t qbOSWaitForEvent(void* event, uint32_t timeoutMs);

// Atomic increment and decrement of a shared counter; each returns the new value.
int32_t qbOSInterlockedIncrement(volatile int32_t* counter);
int32_t qbOSInterlockedDecrement(volatile int32_t* counter);
// A plain read of such a counter, untorn.
inline int32_t qbOSInterlockedRead(volatile int32_t* counter) {
    return __atomic_load_n(counter, __ATOMIC_RELAXED);
}

}  // namespace cycbcr
