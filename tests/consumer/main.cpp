// A client of the installed library: check.sh compares what it prints.
#include <QBFoundation/QBFoundation.h>

class Guest : public NSObject {
public:
    static Class *cls();
    Class *classObject() const override { return cls(); }

    NSString *description() const override { return "guest "_ns->stringByAppendingString(name_); }

protected:
    virtual BOOL setUpWithName(NSString *name) {
        name_ = name->copy();
        return YES;
    }

private:
    Ref<NSString> name_;
};

Class *Guest::cls() {
    static const qb::Method methods[] = {qb::maker<"guestWithName:">(&Guest::setUpWithName)};
    static Class *const self = new Class("Guest", NSObject::cls(), methods, qb::construct<Guest>);
    return self;
}

static const qb::ClassRegistration registration{&Guest::cls}; // found by its name

int main() {
    NSAutoreleasePool pool;
    ERRORHANDLER = QBErrorCatalogue::init().detach();

    id guests = send(NSClassFromString("NSMutableArray"_ns), "arrayWithCapacity:"_sel, 1u);
    send(guests, "addObject:"_sel, send(NSClassFromString("Guest"_ns), "guestWithName:"_sel, "Ada"_ns));
    OSUserIO::printLn(guests->description());

    QBStringOutputStream *stream = QBStringOutputStream::stream();
    stream->writeObject(NSArray::arrayWith({"a "_ns, "stream"_ns}));
    OSUserIO::printLn(stream->targetString());

    QBFileInputStream::streamWithFile("/no/such/file"_ns);
    OSUserIO::printLn(ERRORHANDLER->errorMessage());
}
