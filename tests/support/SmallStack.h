// Code under a stack that deep recursion would overrun.
#ifndef QBFOUNDATION_TESTS_SUPPORT_SMALLSTACK_H
#define QBFOUNDATION_TESTS_SUPPORT_SMALLSTACK_H

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSString.h>

#include <pthread.h>

#include <cstddef>

#ifdef __SANITIZE_ADDRESS__
constexpr std::size_t kSmallStack = 2048 * 1024; // frames with red zones are several times as large
#else
constexpr std::size_t kSmallStack = 256 * 1024;
#endif

/// "x" in an array in an array ..., `depth` levels.
inline Ref<NSArray> arraysInArrays(std::size_t depth) {
    Ref<NSArray> array = NSArray::initWith({"x"_ns});
    while (--depth)
        array = NSArray::initWith({array.get()});
    return array;
}

/// Runs `work` to its end, with a pool of its own, on a thread whose stack has `kSmallStack` bytes. Returns
/// false when there is no such thread.
template <class Work>
bool runOnSmallStack(Work work) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_t thread;
    const auto run = [](void *context) -> void * {
        const NSAutoreleasePool pool;
        (*static_cast<Work *>(context))();
        return nullptr;
    };
    const bool isStarted = pthread_attr_setstacksize(&attributes, kSmallStack) == 0 &&
                           pthread_create(&thread, &attributes, run, &work) == 0;
    pthread_attr_destroy(&attributes);
    return isStarted && pthread_join(thread, nullptr) == 0;
}

#endif
