// What a program does before it uses the library.
#ifndef QBFOUNDATION_QBFOUNDATIONINITIALIZER_H
#define QBFOUNDATION_QBFOUNDATIONINITIALIZER_H

#include <QBFoundation/Foundation/NSObject.h>

/// Starts the library up.
///
/// A program makes its error handler and stores it in `ERRORHANDLER`, calls
/// `initializeDebugAndProfileChannels`, and then makes channels active and sets up the default logger.
class QB_EXPORT QBFoundationInitializer : public NSObject {
public:
    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Registers the debug channels "utils", "misc", "process", "fileio", "socket" and the profile channel
    /// "netio", and stores their numbers in `DEBUG_CHANNEL_UTILS` and so on.
    static void initializeDebugAndProfileChannels();
};

#endif
