#include <QBFoundation/QBFoundation.h>

#include <iostream>

/// A visitor's name and how often it was seen.
class Visitor : public NSObject {
public:
    static Class *cls();
    Class *classObject() const override { return cls(); }

    static Visitor *visitorWithName(NSString *name) {
        return qb::init<Visitor>(&Visitor::setUpWithName, name).autorelease();
    }

    virtual std::uint32_t greet() { return ++visits_; }
    NSString *description() const override {
        return NSString::stringWithFormat("%@ (%u)"_ns, name_.get(), visits_);
    }

protected:
    virtual BOOL setUpWithName(NSString *name) {
        name_ = name->copy();
        return YES;
    }

private:
    Ref<NSString> name_;
    std::uint32_t visits_ = 0;
};

Class *Visitor::cls() {
    static const qb::Method methods[] = {
        qb::maker<"visitorWithName:">(&Visitor::setUpWithName),
        qb::method<"greet">(&Visitor::greet),
    };
    static Class *const self = new Class("Visitor", NSObject::cls(), methods, qb::construct<Visitor>);
    return self;
}

static const qb::ClassRegistration registration{&Visitor::cls}; // found by its name

int main() {
    NSAutoreleasePool pool;
    NSMutableArray *visitors =
        NSMutableArray::arrayWith({Visitor::visitorWithName("Ada"_ns), QBNil::value()});
    visitors->addObject(send(NSClassFromString("Visitor"_ns), "visitorWithName:"_sel, "Grace"_ns));

    for (id visitor : *visitors)
        std::cout << "greeted " << send<std::uint32_t>(visitor, "greet"_sel) << " times\n";
    std::cout << *visitors->lastObject() << '\n';

    try {
        send(visitors->lastObject(), "fly"_sel);
    } catch (const InvalidArgumentException &exception) {
        std::cout << exception.what() << '\n';
    }
}
