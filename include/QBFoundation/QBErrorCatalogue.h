// Texts for the library's error numbers.
#ifndef QBFOUNDATION_QBERRORCATALOGUE_H
#define QBFOUNDATION_QBERRORCATALOGUE_H

#include <QBFoundation/QBErrorHandler.h>

/// An error handler whose messages say what happened: it words the library's numbers as `qb::kErrorNumbers`
/// does. For programs that store it in `ERRORHANDLER`; those with numbers of their own derive from it.
class QB_EXPORT QBErrorCatalogue : public QBErrorHandler {
public:
    QBErrorCatalogue() = default;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    static Ref<QBErrorCatalogue> init() { return qb::init<QBErrorCatalogue>(&QBErrorCatalogue::setUp); }
    static QBErrorCatalogue *errorHandler() { return init().autorelease(); }

    /// Returns `withDefaultFormat`, or where that is nil the library's format of its number.
    NSString *formatStringForErrorId(int error, NSString *withDefaultFormat) override;
};

#endif
