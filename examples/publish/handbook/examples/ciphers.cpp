#include <QBFoundation/QBFoundation.h>

/// Writes data through a filter, which leaves the result in the sink behind it.
NSData *converted(NSData *data, NSString *key, BOOL decrypt) {
    QBDataOutputStream *target = QBDataOutputStream::stream();
    QBBlowfishOutputFilter *filter = QBBlowfishOutputFilter::streamWithKey(key, decrypt, target);
    QBCopyShop::copyShop()->copyFrom(QBDataInputStream::streamWithData(data), filter);
    filter->close(); // the last block and its length are written now
    return target->targetData();
}

int main() {
    NSAutoreleasePool pool;
    ERRORHANDLER = new QBErrorCatalogue;

    NSData *letter = "Meet me at the old mill."_ns->asData();
    NSData *sealed = converted(letter, "seven hills"_ns, /*decrypt=*/NO);
    OSUserIO::printLn(
        NSString::stringWithFormat("%u bytes became %u"_ns, letter->length(), sealed->length()));

    NSData *opened = converted(sealed, "seven hills"_ns, /*decrypt=*/YES);
    OSUserIO::printLn(NSString::initWithData(opened).autorelease());

    // Nothing tells a wrong key from the right one but the content.
    NSData *garbled = converted(sealed, "seven hens"_ns, /*decrypt=*/YES);
    OSUserIO::printLn(garbled->isEqualToData(letter) ? "read"_ns : "garbage"_ns);

    converted(sealed->subdataWithRange(NSMakeRange(0, 20)), "seven hills"_ns, /*decrypt=*/YES);
    OSUserIO::printLn(ERRORHANDLER->errorMessage());
}
