#include <QBFoundation/QBFoundationInitializer.h>

#include <QBFoundation/OSAdaptor/OSDebugPrinter.h>
#include <QBFoundation/Runtime/MethodTable.h>

Class *QBFoundationInitializer::cls() {
    static const qb::Method methods[] = {
        qb::classMethod<"initializeDebugAndProfileChannels">(
            &QBFoundationInitializer::initializeDebugAndProfileChannels),
    };
    static Class *const self = new Class("QBFoundationInitializer", NSObject::cls(), methods,
                                         qb::construct<QBFoundationInitializer>);
    return self;
}

void QBFoundationInitializer::initializeDebugAndProfileChannels() {
    OSDebugPrinter *const printer = OSDebugPrinter::globalDebugPrinter();
    DEBUG_CHANNEL_UTILS = printer->registerDebugChannel("utils"_ns);
    DEBUG_CHANNEL_MISC = printer->registerDebugChannel("misc"_ns);
    DEBUG_CHANNEL_PROCESS = printer->registerDebugChannel("process"_ns);
    DEBUG_CHANNEL_FILEIO = printer->registerDebugChannel("fileio"_ns);
    DEBUG_CHANNEL_SOCKET = printer->registerDebugChannel("socket"_ns);
    PROFILE_CHANNEL_NET_IO = printer->registerProfileChannel("netio"_ns);
}
