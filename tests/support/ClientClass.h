// Classes of clients, as tests make them.
#ifndef QBFOUNDATION_TESTS_SUPPORT_CLIENTCLASS_H
#define QBFOUNDATION_TESTS_SUPPORT_CLIENTCLASS_H

#include <QBFoundation/Runtime/Class.h>
#include <QBFoundation/Runtime/Selector.h>

/// What the class `Self` of a client derives from, to be one of that name below `Base`. It may have static
/// `methods` of its own.
template <class Self, class Base, qb::FixedString name>
struct ClientClass : Base {
    using Base::Base;
    static Class *cls() {
        static Class *const self = new Class(name.text, Base::cls(), Self::methods(), qb::construct<Self>);
        return self;
    }
    Class *classObject() const override { return cls(); }
    static qb::MethodTables methods() { return {}; }
};

#endif
