// Reads any bytes as an archive of both kinds. What is read can be written, and reads back as the same bytes.
#include <QBFoundation/Foundation/NSArchiver.h>
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSUnarchiver.h>
#include <QBFoundation/QBErrorHandler.h>

#include <cstdlib>

namespace {

template <class Archiver, class Unarchiver>
void readAndWrite(NSData *data) {
    const id object = Unarchiver::unarchiveObjectWithData(data);
    ERRORHANDLER->clearErrorStack();
    if (!object)
        return;
    NSData *const written = Archiver::archivedDataWithRootObject(object);
    if (!written)
        std::abort();
    const id again = Unarchiver::unarchiveObjectWithData(written);
    if (!again || !Archiver::archivedDataWithRootObject(again)->isEqual(written))
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
    static QBErrorHandler *const handler = QBErrorHandler::init().detach();
    ERRORHANDLER = handler;
    const NSAutoreleasePool pool;
    NSData *const data = NSData::dataWithBytes(bytes, static_cast<std::uint32_t>(size));
    readAndWrite<NSArchiver, NSUnarchiver>(data);
    readAndWrite<NSKeyedArchiver, NSKeyedUnarchiver>(data);
    return 0;
}
