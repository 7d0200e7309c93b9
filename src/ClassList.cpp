#include "Runtime/ClassRegistry.h"

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSEnumerator.h>
#include <QBFoundation/Foundation/NSInvocation.h>
#include <QBFoundation/Foundation/NSNumber.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/QBArrayOutputStream.h>
#include <QBFoundation/QBBufferOutputStream.h>
#include <QBFoundation/QBDataInputStream.h>
#include <QBFoundation/QBDataOutputStream.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/QBFilePointerInputStream.h>
#include <QBFoundation/QBInputFilter.h>
#include <QBFoundation/QBInputStream.h>
#include <QBFoundation/QBInputStreamWithKnownLength.h>
#include <QBFoundation/QBNil.h>
#include <QBFoundation/QBOutputStream.h>
#include <QBFoundation/QBStringInputStream.h>
#include <QBFoundation/QBStringOutputStream.h>
#include <QBFoundation/Runtime/Class.h>

// Named here one by one, so that the linker keeps each class of the static library that is asked for by its
// name.
std::span<const qb::ListedClass> qb::libraryClasses() {
    static constexpr ListedClass classes[] = {
        {"Class", &Class::cls},
        {"NSArray", &NSArray::cls},
        {"NSAutoreleasePool", &NSAutoreleasePool::cls},
        {"NSData", &NSData::cls},
        {"NSDictionary", &NSDictionary::cls},
        {"NSEnumerator", &NSEnumerator::cls},
        {"NSInvocation", &NSInvocation::cls},
        {"NSLongLongNumber", &NSLongLongNumber::cls},
        {"NSMutableArray", &NSMutableArray::cls},
        {"NSMutableData", &NSMutableData::cls},
        {"NSMutableDictionary", &NSMutableDictionary::cls},
        {"NSMutableString", &NSMutableString::cls},
        {"NSNumber", &NSNumber::cls},
        {"NSObject", &NSObject::cls},
        {"NSString", &NSString::cls},
        {"Protocol", &Protocol::cls},
        {"QBArrayOutputStream", &QBArrayOutputStream::cls},
        {"QBBufferOutputStream", &QBBufferOutputStream::cls},
        {"QBDataInputStream", &QBDataInputStream::cls},
        {"QBDataOutputStream", &QBDataOutputStream::cls},
        {"QBErrorHandler", &QBErrorHandler::cls},
        {"QBFilePointerInputStream", &QBFilePointerInputStream::cls},
        {"QBInputFilter", &QBInputFilter::cls},
        {"QBInputStream", &QBInputStream::cls},
        {"QBInputStreamWithKnownLength", &QBInputStreamWithKnownLength::cls},
        {"QBNil", &QBNil::cls},
        {"QBOutputStream", &QBOutputStream::cls},
        {"QBStringInputStream", &QBStringInputStream::cls},
        {"QBStringOutputStream", &QBStringOutputStream::cls},
    };
    return classes;
}
