// The thread layer on POSIX threads: an event is a mutex, a condition variable
// and a flag; a counter is an atomic word.
#include "platform/threads.h"

#include <pthread.h>
#include <time.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <new>

namespace cycbcr {
namespace {

// Threads started by one thread and still inside their bodies. Each creating
// thread has its own count; a started thread holds a pointer to its creator's.
struct StartedThreads {
    std::atomic<int32_t> running{0};
};
thread_local StartedThreads started;

std::atomic<uint32_t> next_thread_id{1};

struct Start {
    ThreadBody body;
    void* arg;
    std::atomic<int32_t>* running;
    char name[16];
};

struct Thread {
    pthread_t id;
};

void* run_thread(void* p) {
    Start start = *static_cast<Start*>(p);
    delete static_cast<Start*>(p);
    if (start.name[0] != '\0') pthread_setname_np(pthread_self(), start.name);
    start.body(start.arg);
    // The last thing this thread does with its creator's state.
    if (start.running->fetch_sub(1, std::memory_order_release) == 1) start.running->notify_all();
    return nullptr;
}

struct Event {
    pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;
    pthread_cond_t changed;
    bool set = false;
};

}  // namespace

void* qbOSCreateThread(void*, uint32_t, ThreadBody body, void* arg, uint32_t, uint32_t* threadId,
                       const char* name) {
    auto* start = new (std::nothrow) Start{body, arg, &started.running, {}};
    auto* thread = new (std::nothrow) Thread{};
    if (start == nullptr || thread == nullptr) {
        delete start;
        delete thread;
        return nullptr;
    }
    if (name != nullptr) std::strncpy(start->name, name, sizeof start->name - 1);
    started.running.fetch_add(1, std::memory_order_relaxed);
    if (pthread_create(&thread->id, nullptr, run_thread, start) != 0) {
        started.running.fetch_sub(1, std::memory_order_relaxed);
        delete start;
        delete thread;
        return nullptr;
    }
    if (threadId != nullptr) *threadId = next_thread_id.fetch_add(1, std::memory_order_relaxed);
    return thread;
}

void qbOSCloseThread(void* thread, const char* mode) {
    if (thread == nullptr) return;
    auto* t = static_cast<Thread*>(thread);
    if (mode != nullptr && std::strchr(mode, 'd') != nullptr)
        pthread_detach(t->id);
    else
        pthread_join(t->id, nullptr);
    delete t;
}

void qbOSWaitForStartedThreads() {
    for (int32_t n; (n = started.running.load(std::memory_order_acquire)) != 0;)
        started.running.wait(n, std::memory_order_acquire);
}

void* qbOSCreateEvent(void*, uint32_t, uint32_t initiallySet, const char*) {
    auto* e = new (std::nothrow) Event;
    if (e == nullptr) return nullptr;
    pthread_condattr_t attr;
    pthread_condattr_init(&attr);
    pthread_condattr_setclock(&attr, CLOCK_MONOTONIC);
    pthread_cond_init(&e->changed, &attr);
    pthread_condattr_destroy(&attr);
    e->set = initiallySet != 0;
    return e;
}

void qbOSCloseEvent(void* event) {
    if (event == nullptr) return;
    auto* e = static_cast<Event*>(event);
    pthread_cond_destroy(&e->changed);
    pthread_mutex_destroy(&e->lock);
    delete e;
}

void qbOSSetEvent(void* event) {
    if (event == nullptr) return;
    auto* e = static_cast<Event*>(event);
    pthread_mutex_lock(&e->lock);
    e->set = true;
    pthread_cond_broadcast(&e->changed);
    pthread_mutex_unlock(&e->lock);
}

uint32_t qbOSWaitForEvent(void* event, uint32_t timeoutMs) {
    if (event == nullptr) return 1;
    auto* e = static_cast<Event*>(event);
    timespec until;
    clock_gettime(CLOCK_MONOTONIC, &until);
    until.tv_sec += timeoutMs / 1000;
    until.tv_nsec += static_cast<long>(timeoutMs % 1000) * 1000000L;
    if (until.tv_nsec >= 1000000000L) {
        until.tv_nsec -= 1000000000L;
        ++until.tv_sec;
    }
    pthread_mutex_lock(&e->lock);
    int rc = 0;
    while (!e->set && rc != ETIMEDOUT) rc = pthread_cond_timedwait(&e->changed, &e->lock, &until);
    const bool set = e->set;
    pthread_mutex_unlock(&e->lock);
    return set ? 0 : 1;
}

int32_t qbOSInterlockedIncrement(volatile int32_t* counter) {
    return __atomic_add_fetch(counter, 1, __ATOMIC_ACQ_REL);
}
int32_t qbOSInterlockedDecrement(volatile int32_t* counter) {
    return __atomic_sub_fetch(counter, 1, __ATOMIC_ACQ_REL);
}

}  // namespace cycbcr
