// Apart from the loops that call it, so that no call is decided when they are compiled.
#include <QBFoundation/Runtime/MethodTable.h>

#include "Runtime/ObjectBench.h"

Class *Adder::cls() {
    static const qb::Method methods[] = {qb::method<"add:">(&Adder::add)};
    static Class *const self = new Class("Adder", NSObject::cls(), methods, qb::construct<Adder>);
    return self;
}

Ref<Adder> Adder::init() {
    return Ref<Adder>::adopt(new Adder);
}

std::int32_t Adder::add(std::int32_t amount) {
    return sum_ += amount;
}
