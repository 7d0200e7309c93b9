// Reads any text as a property list; what could be read is written and read again, and stays equal.
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/QBPropertyListOutputStream.h>

#include "support/Require.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static QBErrorHandler *const handler = ERRORHANDLER = QBErrorHandler::init().detach();
    const NSAutoreleasePool pool;
    const id value = NSString::stringWith({reinterpret_cast<const char *>(data), size})->propertyList();
    require((value != nullptr) == (handler->errorState() == ERRORSTATE_OK), "a value or an error");
    handler->clearErrorStack();
    if (!value)
        return 0;

    QBPropertyListOutputStream *const stream = QBPropertyListOutputStream::stream();
    stream->writeObject(value);
    const id readAgain = stream->targetData()->propertyList();
    require(readAgain && readAgain->isEqual(value), "what is written is read back equal");
    QBPropertyListOutputStream *const second = QBPropertyListOutputStream::stream();
    second->writeObject(readAgain);
    require(second->targetData()->isEqual(stream->targetData()), "equal values in one order have one text");
    require(handler->errorState() == ERRORSTATE_OK, "no error");
    return 0;
}
