#include <QBFoundation/QBErrorCatalogue.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Runtime/MethodTable.h>

// Without a table of its own: the operations are the handler's.
Class *QBErrorCatalogue::cls() {
    static Class *const self =
        new Class("QBErrorCatalogue", QBErrorHandler::cls(), {}, qb::construct<QBErrorCatalogue>);
    return self;
}

NSString *QBErrorCatalogue::formatStringForErrorId(int error, NSString *withDefaultFormat) {
    const qb::ErrorNumber *const known = withDefaultFormat ? nullptr : qb::errorNumber(error);
    return known ? NSString::stringWithCString(known->format) : withDefaultFormat;
}
