#pragma once

// ThreadSanitizer cannot see the locks with which Qt's thread pool hands a task to a worker and
// its event queue hands a queued call to the GUI thread: Qt's libraries are not built with it.
// These two calls name such a hand-over for it: whatever a thread did before handOver() is seen
// as done by a thread that has since called takeOver(). In other builds they are nothing.
#if defined(__SANITIZE_THREAD__)
extern "C" void __tsan_acquire(void* address);
extern "C" void __tsan_release(void* address);
namespace ThreadHandOver {
inline char token;
inline void handOver() { __tsan_release(&token); }
inline void takeOver() { __tsan_acquire(&token); }
} // namespace ThreadHandOver
#else
namespace ThreadHandOver {
inline void handOver() {}
inline void takeOver() {}
} // namespace ThreadHandOver
#endif
