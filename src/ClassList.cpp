#include "Runtime/ClassRegistry.h"

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSCharacterSet.h>
#include <QBFoundation/Foundation/NSCalendarDate.h>
#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Foundation/NSDate.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSEnumerator.h>
#include <QBFoundation/Foundation/NSInvocation.h>
#include <QBFoundation/Foundation/NSNumber.h>
#include <QBFoundation/Foundation/NSProcessInfo.h>
#include <QBFoundation/Foundation/NSSet.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/Foundation/NSTimeZone.h>
#include <QBFoundation/IdCreator.h>
#include <QBFoundation/OSAdaptor/OSDebugPrinter.h>
#include <QBFoundation/OSAdaptor/OSLogger.h>
#include <QBFoundation/OSAdaptor/OSObject.h>
#include <QBFoundation/OSAdaptor/OSProcess.h>
#include <QBFoundation/OSAdaptor/OSTime.h>
#include <QBFoundation/OSAdaptor/OSUserIO.h>
#include <QBFoundation/QBArrayOutputStream.h>
#include <QBFoundation/QBBufferOutputStream.h>
#include <QBFoundation/QBDataOutputStream.h>
#include <QBFoundation/Foundation/NSValue.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/QBNil.h>
#include <QBFoundation/QBOutputStream.h>
#include <QBFoundation/QBStringOutputStream.h>
#include <QBFoundation/Runtime/Class.h>

// Named here one by one, so that the linker keeps each class of the static library that is asked for by its
// name.
std::span<const qb::ListedClass> qb::libraryClasses() {
    static constexpr ListedClass classes[] = {
        {"Class", &Class::cls},
        {"IdCreator", &IdCreator::cls},
        {"NSArray", &NSArray::cls},
        {"NSAutoreleasePool", &NSAutoreleasePool::cls},
        {"NSCharacterSet", &NSCharacterSet::cls},
        {"NSCalendarDate", &NSCalendarDate::cls},
        {"NSData", &NSData::cls},
        {"NSDate", &NSDate::cls},
        {"NSDictionary", &NSDictionary::cls},
        {"NSEnumerator", &NSEnumerator::cls},
        {"NSInvocation", &NSInvocation::cls},
        {"NSLongLongNumber", &NSLongLongNumber::cls},
        {"NSMutableArray", &NSMutableArray::cls},
        {"NSMutableData", &NSMutableData::cls},
        {"NSMutableDictionary", &NSMutableDictionary::cls},
        {"NSMutableSet", &NSMutableSet::cls},
        {"NSMutableString", &NSMutableString::cls},
        {"NSNumber", &NSNumber::cls},
        {"NSObject", &NSObject::cls},
        {"NSProcessInfo", &NSProcessInfo::cls},
        {"NSSet", &NSSet::cls},
        {"NSString", &NSString::cls},
        {"NSTimeZone", &NSTimeZone::cls},
        {"OSDebugPrinter", &OSDebugPrinter::cls},
        {"OSLogger", &OSLogger::cls},
        {"OSObject", &OSObject::cls},
        {"OSProcess", &OSProcess::cls},
        {"OSTime", &OSTime::cls},
        {"OSUserIO", &OSUserIO::cls},
        {"NSValue", &NSValue::cls},
        {"Protocol", &Protocol::cls},
        {"QBArrayOutputStream", &QBArrayOutputStream::cls},
        {"QBBufferOutputStream", &QBBufferOutputStream::cls},
        {"QBDataOutputStream", &QBDataOutputStream::cls},
        {"QBErrorHandler", &QBErrorHandler::cls},
        {"QBNil", &QBNil::cls},
        {"QBOutputStream", &QBOutputStream::cls},
        {"QBStringOutputStream", &QBStringOutputStream::cls},
    };
    return classes;
}
