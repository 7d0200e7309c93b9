// Objects and messages, beside what programs would use instead.
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSInvocation.h>
#include <QBFoundation/Foundation/NSObject.h>
#include <QBFoundation/Runtime/Send.h>

#include "Runtime/ObjectBench.h"

#include <benchmark/benchmark.h>

#if QB_HAVE_GLIB
#include <glib-object.h>
#endif

namespace {

struct Plain {
    virtual ~Plain() = default;
    std::uint32_t count = 1;
};

void createOurs(benchmark::State &state) {
    for (auto _ : state) {
        NSObject *object = new NSObject;
        benchmark::DoNotOptimize(object);
        object->release();
    }
}
BENCHMARK(createOurs)->Name("Object/create-release/ours");

void createPlain(benchmark::State &state) {
    for (auto _ : state) {
        Plain *object = new Plain;
        benchmark::DoNotOptimize(object);
        delete object;
    }
}
BENCHMARK(createPlain)->Name("Object/create-release/new-delete");

#if QB_HAVE_GLIB
void createGObject(benchmark::State &state) {
    for (auto _ : state) {
        gpointer object = g_object_new(G_TYPE_OBJECT, nullptr);
        benchmark::DoNotOptimize(object);
        g_object_unref(object);
    }
}
BENCHMARK(createGObject)->Name("Object/create-release/gobject");
#endif

void retainOurs(benchmark::State &state) {
    auto object = NSObject::init();
    for (auto _ : state) {
        object->retain();
        benchmark::ClobberMemory();
        object->release();
        benchmark::ClobberMemory();
    }
}
BENCHMARK(retainOurs)->Name("Object/retain-release/ours");

void retainPlain(benchmark::State &state) {
    auto *object = new Plain;
    benchmark::DoNotOptimize(object);
    for (auto _ : state) {
        ++object->count;
        benchmark::ClobberMemory();
        --object->count;
        benchmark::ClobberMemory();
    }
    delete object;
}
BENCHMARK(retainPlain)->Name("Object/retain-release/counter");

void autoreleaseOurs(benchmark::State &state) {
    for (auto _ : state) {
        NSAutoreleasePool pool;
        for (int i = 0; i < 100; ++i)
            benchmark::DoNotOptimize(NSObject::init().autorelease());
    }
}
BENCHMARK(autoreleaseOurs)->Name("Object/autorelease-100/ours");

void sendOurs(benchmark::State &state) {
    auto adder = Adder::init();
    for (auto _ : state)
        benchmark::DoNotOptimize(send<std::int32_t>(adder.get(), "add:"_sel, 3));
}
BENCHMARK(sendOurs)->Name("Message/send/ours");

void sendSelectorOurs(benchmark::State &state) {
    auto adder = Adder::init();
    const SEL selector = Selector::named("add:"); // not known to the compiler
    for (auto _ : state)
        benchmark::DoNotOptimize(send<std::int32_t>(adder.get(), selector, 3));
}
BENCHMARK(sendSelectorOurs)->Name("Message/send-run-time-selector/ours");

void callVirtual(benchmark::State &state) {
    auto owner = Adder::init();
    Adder *const adder = owner.get();
    for (auto _ : state)
        benchmark::DoNotOptimize(adder->add(3));
}
BENCHMARK(callVirtual)->Name("Message/send/virtual");

void invokeOurs(benchmark::State &state) {
    auto adder = Adder::init();
    NSInvocation *invocation = NSInvocation::invocationWithTarget(adder, "add:"_sel);
    invocation->setArguments({3});
    for (auto _ : state) {
        invocation->invoke();
        benchmark::DoNotOptimize(invocation->returnValue().integer());
    }
}
BENCHMARK(invokeOurs)->Name("Message/invocation/ours");

#if QB_HAVE_QT
void invokeQt(benchmark::State &state) {
    QtAdder adder;
    for (auto _ : state) {
        int sum = 0;
        QMetaObject::invokeMethod(&adder, "add", Qt::DirectConnection, Q_RETURN_ARG(int, sum), Q_ARG(int, 3));
        benchmark::DoNotOptimize(sum);
    }
}
BENCHMARK(invokeQt)->Name("Message/send/qt-invokeMethod");
BENCHMARK(invokeQt)->Name("Message/invocation/qt-invokeMethod");
#endif

} // namespace
