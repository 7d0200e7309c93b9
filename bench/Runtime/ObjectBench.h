// The receivers of the measured messages.
#ifndef QBFOUNDATION_BENCH_RUNTIME_OBJECTBENCH_H
#define QBFOUNDATION_BENCH_RUNTIME_OBJECTBENCH_H

#include <QBFoundation/Foundation/NSObject.h>
#include <QBFoundation/Runtime/Ref.h>

#include <cstdint>

#if QB_HAVE_QT
#include <QObject>
#endif

class Adder : public NSObject {
public:
    static Class *cls();
    Class *classObject() const override { return cls(); }
    static Ref<Adder> init();

    virtual std::int32_t add(std::int32_t amount);

private:
    std::int32_t sum_ = 0;
};

#if QB_HAVE_QT
class QtAdder : public QObject {
    Q_OBJECT
public:
    Q_INVOKABLE int add(int amount) { return sum_ += amount; }

private:
    int sum_ = 0;
};
#endif

#endif
