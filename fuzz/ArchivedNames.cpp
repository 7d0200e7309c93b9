// Reads any archive for selectors and classes, among other values. Names that were found are written and read
// again, and no object comes of a class that the reader has not named.
#include <QBFoundation/Foundation/NSArchiver.h>
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSUnarchiver.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "support/Require.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace {

// A class with an archived form, that nobody names to a reader.
class Unnamed : public NSObject {
public:
    Unnamed() { wasMade = true; }

    static Class *cls() {
        static const qb::Method methods[] = {
            qb::initialiser<"initWithCoder:">(&Unnamed::setUpWithCoder),
        };
        static Class *const self = new Class("Unnamed", NSObject::cls(), methods, qb::construct<Unnamed>);
        return self;
    }
    Class *classObject() const override { return cls(); }

    static bool wasMade;

protected:
    BOOL setUpWithCoder(NSCoder *) override { return YES; }
};

bool Unnamed::wasMade = false;
const qb::ClassRegistration registration{&Unnamed::cls};

NSCoder *readerOf(NSArchiver *archiver) {
    return NSUnarchiver::initForReadingWithData(archiver->archiverData()).autorelease();
}

void checkSelector(SEL selector) {
    NSArchiver *const archiver = NSArchiver::init().autorelease();
    archiver->encodeSelector(selector);
    require(readerOf(archiver)->decodeSelector() == selector, "a selector comes back");
}

void checkClass(Class *cls) {
    NSArchiver *const archiver = NSArchiver::init().autorelease();
    archiver->encodeClass(cls);
    require(readerOf(archiver)->decodeClass() == cls, "a class comes back");
}

void read(NSCoder *coder, char what) {
    const void *value = nullptr;
    switch (what) {
    case 'S':
        return checkSelector(coder->decodeSelector());
    case 'C':
        return checkClass(coder->decodeClass());
    case '@':
        return static_cast<void>(coder->decodeObject());
    case '#':
    case ':': {
        const char type[] = {what, '\0'};
        return coder->decodeValueOfObjCType(type, &value);
    }
    default:
        return;
    }
}

} // namespace

// A line of letters says what is read, in order; the archive stands behind it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
    static QBErrorHandler *const handler = QBErrorHandler::init().detach();
    ERRORHANDLER = handler;
    const NSAutoreleasePool pool;
    const std::string_view input(reinterpret_cast<const char *>(bytes), size);
    const std::size_t end = input.find('\n');
    if (end == std::string_view::npos)
        return 0;
    const std::string_view archive = input.substr(end + 1);
    NSData *const data = NSData::dataWithBytes(archive.data(), static_cast<std::uint32_t>(archive.size()));
    if (const Ref<NSUnarchiver> reader = NSUnarchiver::initForReadingWithData(data))
        for (const char what : input.substr(0, end))
            read(reader.get(), what);
    require(!Unnamed::wasMade, "no object of a class that was not named");
    ERRORHANDLER->clearErrorStack();
    return 0;
}
