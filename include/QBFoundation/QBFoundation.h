// The whole library.
#ifndef QBFOUNDATION_QBFOUNDATION_H
#define QBFOUNDATION_QBFOUNDATION_H

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSCharacterSet.h>
#include <QBFoundation/Foundation/NSCalendarDate.h>
#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Foundation/NSDate.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSEnumerator.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Foundation/NSInvocation.h>
#include <QBFoundation/Foundation/NSNumber.h>
#include <QBFoundation/Foundation/NSObject.h>
#include <QBFoundation/Foundation/NSProcessInfo.h>
#include <QBFoundation/Foundation/NSRange.h>
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
#include <QBFoundation/Runtime/Send.h>

#endif
