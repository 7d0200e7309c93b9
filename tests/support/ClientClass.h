// Classes of clients, as tests make them.
#ifndef QBFOUNDATION_TESTS_SUPPORT_CLIENTCLASS_H
#define QBFOUNDATION_TESTS_SUPPORT_CLIENTCLASS_H

#include <QBFoundation/Runtime/Class.h>
#include <QBFoundation/Runtime/Selector.h>

#include <span>
#include <vector>

/// What the class `Self` of a client derives from, to be one of that name below `Base`. It may have static
/// `operations` of its own, or whole tables as its `methods`.
template <class Self, class Base, qb::FixedString name>
struct ClientClass : Base {
    using Base::Base;
    using Operations = std::vector<qb::Method>;
    static Class *cls() {
        static Class *const self = new Class(name.text, Base::cls(), Self::methods(), qb::construct<Self>);
        return self;
    }
    Class *classObject() const override { return cls(); }
    static qb::MethodTables methods() {
        static const Operations all = Self::operations();
        return {std::span(all)};
    }
    static Operations operations() { return {}; }
};

#endif
