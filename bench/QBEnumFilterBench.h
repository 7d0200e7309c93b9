// What the measured filters go over.
#ifndef QBFOUNDATION_BENCH_QBENUMFILTERBENCH_H
#define QBFOUNDATION_BENCH_QBENUMFILTERBENCH_H

#include <QBFoundation/Foundation/NSObject.h>
#include <QBFoundation/Runtime/Ref.h>

#include <cstdint>

/// An entry of an order: many have a replacement, which may be in stock, and may be blocked.
class Entry : public NSObject {
public:
    static Class *cls();
    Class *classObject() const override { return cls(); }
    static Ref<Entry> initWithNumber(std::uint32_t number);

    virtual Entry *replacement() const;
    virtual BOOL isInStock() const;
    virtual BOOL isBlocked() const;

private:
    std::uint32_t number_ = 0;
    Ref<Entry> replacement_;
};

#endif
